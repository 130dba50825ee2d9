// Sekonic serial scanners (SR-410, SR-430, SR-601, SR-607, SR-700).
#pragma once

namespace zebreader81 {
class clsZEBReader;

namespace basScanningSystems {
bool InitReaderSS(clsZEBReader& reader);
bool CloseReaderSS();
bool ReadPageSS(clsZEBReader& reader);
bool PrintSS(clsZEBReader& reader, bool skip);
bool RejectPageSS(clsZEBReader& reader, bool reject);
} // namespace basScanningSystems
} // namespace zebreader81
