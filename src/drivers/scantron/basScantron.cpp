#include "drivers/scantron/basScantron.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basScantron {

bool DownloadFormST(clsZEBReader&) { return false; }
bool SendCommandST(clsZEBReader&, const std::string&) { return false; }
bool InitReaderST(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basScantron.InitReaderST"); }
bool CloseReaderST(clsZEBReader&) { return false; }
bool ResetReaderST(clsZEBReader&) { return false; }
int16_t CheckStatusST(clsZEBReader&) { return -1; }
bool ReadPageST(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basScantron.ReadPageST"); }
bool ReadWindowsST(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basScantron.ReadWindowsST"); }
bool RejectPageST(clsZEBReader&, bool&) { return false; }
bool PrintST(clsZEBReader&) { return false; }

} // namespace zebreader81::basScantron
