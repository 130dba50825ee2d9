#include "drivers/ncs/basNCSEZData.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basNCSEZData {

bool InitReaderNCSEZ(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basNCSEZData.InitReaderNCSEZ"); }
bool CloseReaderNCSEZ(clsZEBReader&) { return false; }
bool ReadPageNCSEZ(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basNCSEZData.ReadPageNCSEZ"); }
bool RejectPageNCSEZ(clsZEBReader&, bool) { return false; }
bool SetValuesNCSEZ(clsZEBReader&, const std::string&, const std::string&) { return false; }
bool CheckThresholdNCSEZ(int16_t, const std::string&) { return false; }

} // namespace zebreader81::basNCSEZData
