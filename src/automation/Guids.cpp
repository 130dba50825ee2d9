// The interface and class ids of the type library, defined once.
#include "ZEBReader81_i.c"
