// EZData scanner (and the ACP-100 served by the same protocol).
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {
class clsZEBReader;

namespace basNCSEZData {
bool InitReaderNCSEZ(clsZEBReader& reader);
bool CloseReaderNCSEZ(clsZEBReader& reader);
bool ReadPageNCSEZ(clsZEBReader& reader);
/// Sends the sheet to the reject (True) or accept stacker.
bool RejectPageNCSEZ(clsZEBReader& reader, bool reject);
/// Sends one configuration frame and checks the answer.
bool SetValuesNCSEZ(clsZEBReader& reader, const std::string& frame, const std::string& commandWord);
/// True when the two-character threshold code stands for `wanted`.
bool CheckThresholdNCSEZ(int16_t wanted, const std::string& thresholdCode);
} // namespace basNCSEZData
} // namespace zebreader81
