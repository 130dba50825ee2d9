// The Sekonic serial protocol and the USB maker library are not available to us; every
// procedure says so. The argument-less close procedures name the model the thread last
// tried to open.
#include "drivers/Unsupported.h"
#include "drivers/sekonic/basScanningSystems.h"
#include "drivers/sekonic/basSekonicSR.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81 {

namespace {
thread_local int32_t lastSerialType = 0;
thread_local int32_t lastUsbType = 0;
} // namespace

namespace basScanningSystems {
bool InitReaderSS(clsZEBReader& r)
{
    lastSerialType = r.ReaderType();
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.InitReaderSS");
}
bool CloseReaderSS() { return reportUnsupported(lastSerialType, "ZEBReader81 - basScanningSystems.CloseReaderSS"); }
bool ReadPageSS(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basScanningSystems.ReadPageSS"); }
bool PrintSS(clsZEBReader& r, bool) { return reportUnsupported(r, "ZEBReader81 - basScanningSystems.PrintSS"); }
bool RejectPageSS(clsZEBReader& r, bool)
{
    return reportUnsupported(r, "ZEBReader81 - basScanningSystems.RejectPageSS");
}
} // namespace basScanningSystems

namespace basSekonicSR {
bool InitReaderSR(clsZEBReader& r)
{
    lastUsbType = r.ReaderType();
    return reportUnsupported(r, "ZEBReader81 - basSekonicSR.InitReaderSR");
}
bool CloseReaderSR() { return reportUnsupported(lastUsbType, "ZEBReader81 - basSekonicSR.CloseReaderSR"); }
bool ReadPageSR(clsZEBReader& r, int16_t) { return reportUnsupported(r, "ZEBReader81 - basSekonicSR.ReadPageSR"); }
bool PrintSR(clsZEBReaderPrinter&) { return reportUnsupported(lastUsbType, "ZEBReader81 - basSekonicSR.PrintSR"); }
bool RejectPageSR(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basSekonicSR.RejectPageSR"); }
bool EjectPageSR(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basSekonicSR.EjectPageSR"); }
} // namespace basSekonicSR

} // namespace zebreader81
