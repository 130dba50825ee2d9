// The Sekonic serial protocol is not described to us; every procedure says so.
#include "drivers/sekonic/basScanningSystems.h"

#include "drivers/Unsupported.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81::basScanningSystems {

namespace {
// CloseReaderSS takes no reader: it names the model this thread last tried to open.
thread_local int32_t lastReaderType = 0;
} // namespace

bool InitReaderSS(clsZEBReader& r)
{
    lastReaderType = r.ReaderType();
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.InitReaderSS");
}

bool CloseReaderSS()
{
    return reportUnsupported(lastReaderType, "ZEBReader81 - basScanningSystems.CloseReaderSS");
}

bool ReadPageSS(clsZEBReader& r)
{
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.ReadPageSS");
}

bool PrintSS(clsZEBReader& r, bool)
{
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.PrintSS");
}

bool RejectPageSS(clsZEBReader& r, bool)
{
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.RejectPageSS");
}

} // namespace zebreader81::basScanningSystems
