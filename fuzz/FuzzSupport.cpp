#include "FuzzSupport.h"

#include <cstdio>
#include <cstdlib>

namespace zebreader81::fuzz {

void broken(const char* what)
{
    std::fprintf(stderr, "fuzz invariant broken: %s\n", what);
    std::abort();
}

} // namespace zebreader81::fuzz
