// Chatsworth Data scanners (OMR1100, OMR2000, ALS AccelScan, ACF-200, ACP-200).
#pragma once

namespace zebreader81 {
class clsZEBReader;

namespace basChatsworth {
bool InitReaderCT(clsZEBReader& reader);
bool ReadPageCT(clsZEBReader& reader);
/// Sends the sheet to the reject (reject True) or accept stacker.
bool RejectPageCT(clsZEBReader& reader, bool& reject);
} // namespace basChatsworth
} // namespace zebreader81
