#include "drivers/ncs/basNCS.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basNCS {

bool InitReaderNCS(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basNCS.InitReaderNCS"); }
bool CloseReaderNCS(clsZEBReader&) { return false; }
bool CheckStatusNCS(clsZEBReader&) { return false; }
bool PrintNCS(clsZEBReader&) { return false; }
void RejectPageNCS(clsZEBReader&) {}
void EjectPageNCS(clsZEBReader&) {}
bool GetScanModeNCS(clsZEBReader&, int32_t&) { return false; }
bool SetScanModeNCS(clsZEBReader&, int32_t) { return false; }
bool ReadPageNCS(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basNCS.ReadPageNCS"); }

} // namespace zebreader81::basNCS
