// OpScan and iNSIGHT scanners: connection, scan mode, status, imprinter, reject and eject,
// and reading a page.
#pragma once

#include <cstdint>

namespace zebreader81 {
class clsZEBReader;

namespace basNCS {
bool InitReaderNCS(clsZEBReader& reader);
bool CloseReaderNCS(clsZEBReader& reader);
bool CheckStatusNCS(clsZEBReader& reader);
bool PrintNCS(clsZEBReader& reader);
void RejectPageNCS(clsZEBReader& reader);
void EjectPageNCS(clsZEBReader& reader);
/// Full status query; `mode` receives the scanner's scan mode (left alone for an unknown letter).
bool GetScanModeNCS(clsZEBReader& reader, int32_t& mode);
bool SetScanModeNCS(clsZEBReader& reader, int32_t mode);
bool ReadPageNCS(clsZEBReader& reader);
} // namespace basNCS
} // namespace zebreader81
