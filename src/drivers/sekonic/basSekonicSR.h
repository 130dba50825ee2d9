// Sekonic USB scanners (SR1800, SR2300, SR3500, SR6500), reached through the maker's library.
#pragma once

#include <cstdint>

namespace zebreader81 {
class clsZEBReader;
class clsZEBReaderPrinter;

namespace basSekonicSR {
bool InitReaderSR(clsZEBReader& reader);
bool CloseReaderSR();
bool ReadPageSR(clsZEBReader& reader, int16_t recognitionThreshold);
bool PrintSR(clsZEBReaderPrinter& printer);
bool RejectPageSR(clsZEBReader& reader);
bool EjectPageSR(clsZEBReader& reader);
} // namespace basSekonicSR
} // namespace zebreader81
