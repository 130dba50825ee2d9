// Peripheral Dynamics VMR138.
#pragma once

#include <cstdint>

namespace zebreader81 {
class clsZEBReader;

namespace basPeripheralDynamics {
bool InitReaderPD(clsZEBReader& reader);
void CloseReaderPD(clsZEBReader& reader);
/// Status request; the two status bytes come back through the references.
bool CheckStatusPD(clsZEBReader& reader, int16_t& status1, int16_t& status2);
/// Brings the scanner's threshold to the reader's RecognitionThreshold.
bool SetRecThresholdPD(clsZEBReader& reader, int32_t sleepMs);
bool ReadPagePD(clsZEBReader& reader);
void RejectPagePD(clsZEBReader& reader);
void EjectPagePD(clsZEBReader& reader);
} // namespace basPeripheralDynamics
} // namespace zebreader81
