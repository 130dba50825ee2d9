// The Chatsworth wire protocol is not described to us; every procedure says so.
#include "drivers/chatsworth/basChatsworth.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basChatsworth {

bool InitReaderCT(clsZEBReader& r)
{
    return reportUnsupported(r, "ZEBReader81 - basChatsworth.InitReaderCT");
}
bool ReadPageCT(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basChatsworth.ReadPageCT"); }
bool RejectPageCT(clsZEBReader& r, bool&)
{
    return reportUnsupported(r, "ZEBReader81 - basChatsworth.RejectPageCT");
}

} // namespace zebreader81::basChatsworth
