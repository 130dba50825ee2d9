// The Apperson wire protocol is not described to us; every procedure says so.
#include "drivers/apperson/basApperson.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basApperson {

bool InitReaderAP(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basApperson.InitReaderAP"); }
bool CloseReaderAP(clsZEBReader& r)
{
    return reportUnsupported(r, "ZEBReader81 - basApperson.CloseReaderAP");
}
bool ReadPageAP(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basApperson.ReadPageAP"); }
bool RejectPageAP(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basApperson.RejectPageAP"); }
bool EjectPageAP(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basApperson.EjectPageAP"); }

} // namespace zebreader81::basApperson
