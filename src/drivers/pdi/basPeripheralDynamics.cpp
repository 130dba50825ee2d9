#include "drivers/pdi/basPeripheralDynamics.h"

#include "drivers/Unsupported.h"

namespace zebreader81::basPeripheralDynamics {

bool InitReaderPD(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basPeripheralDynamics.InitReaderPD"); }
void CloseReaderPD(clsZEBReader&) {}
bool CheckStatusPD(clsZEBReader&, int16_t&, int16_t&) { return false; }
bool SetRecThresholdPD(clsZEBReader&, int32_t) { return false; }
bool ReadPagePD(clsZEBReader& r) { return reportUnsupported(r, "ZEBReader81 - basPeripheralDynamics.ReadPagePD"); }
void RejectPagePD(clsZEBReader&) {}
void EjectPagePD(clsZEBReader&) {}

} // namespace zebreader81::basPeripheralDynamics
