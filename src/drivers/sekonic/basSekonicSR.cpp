// The Sekonic USB models need the maker's library, which this version does not use; every
// procedure says so.
#include "drivers/sekonic/basSekonicSR.h"

#include "drivers/Unsupported.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81::basSekonicSR {

namespace {
// CloseReaderSR and PrintSR take no reader: they name the model this thread last tried to open.
thread_local int32_t lastReaderType = 0;
} // namespace

bool InitReaderSR(clsZEBReader& r)
{
    lastReaderType = r.ReaderType();
    return reportUnsupported(r, "ZEBReader81 - basSekonicSR.InitReaderSR");
}

bool CloseReaderSR() { return reportUnsupported(lastReaderType, "ZEBReader81 - basSekonicSR.CloseReaderSR"); }

bool ReadPageSR(clsZEBReader& r, int16_t)
{
    return reportUnsupported(r, "ZEBReader81 - basSekonicSR.ReadPageSR");
}

bool PrintSR(clsZEBReaderPrinter&)
{
    return reportUnsupported(lastReaderType, "ZEBReader81 - basSekonicSR.PrintSR");
}

bool RejectPageSR(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basSekonicSR.RejectPageSR"); }

bool EjectPageSR(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basSekonicSR.EjectPageSR"); }

} // namespace zebreader81::basSekonicSR
