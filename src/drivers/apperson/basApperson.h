// Apperson scanners (Advantage Link, GradeMaster, BenchMark 3000, Advantage 1200).
#pragma once

namespace zebreader81 {
class clsZEBReader;

namespace basApperson {
bool InitReaderAP(clsZEBReader& reader);
bool CloseReaderAP(clsZEBReader& reader);
bool ReadPageAP(clsZEBReader& reader);
bool RejectPageAP(clsZEBReader& reader);
bool EjectPageAP(clsZEBReader& reader);
} // namespace basApperson
} // namespace zebreader81
