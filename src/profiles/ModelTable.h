// The models: display names and the driver family that serves each.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {

/// Driver families (one folder under drivers/ each).
enum class Family { None, Apperson, OpScan, SekonicSerial, ScanMark, Chatsworth, EZData, PDI, SekonicUSB };

struct ModelInfo {
    int32_t type;
    const char* enumName;
    const char* displayName;
    Family family;
};

/// The model of a zebReaderType value, or nullptr outside 0 to 41.
const ModelInfo* modelInfo(int32_t type);
/// Driver family of a reader type (None for 0 and values outside the table).
Family familyOf(int32_t type);
/// Short name of a family ("OpScan", "ScanMark"...), as the tools print it.
const char* familyName(Family family);

} // namespace zebreader81
