// The models: display names, the driver family that serves each, and what each can do.
// Code asks this table; it never lists model numbers of its own.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {

/// Driver families (one folder under drivers/ each).
enum class Family { None, Apperson, OpScan, SekonicSerial, ScanMark, Chatsworth, EZData, PDI, SekonicUSB };

/// What a model can do beyond its family's protocol.
enum Capability : uint16_t {
    /// RejectPage and EjectPage reach the family's driver.
    RoutesRejectEject = 1 << 0,
    /// ReaderPrint reaches the family's driver.
    RoutesPrint = 1 << 1,
    /// Answers the port probe and the firmware query (Locate, Firmware).
    Probe = 1 << 2,
    /// Speaks the 8000-series form dialect (threshold command, marks from character 0).
    Dialect8000 = 1 << 3,
};

/// How a model's printer object takes Enabled: never on, as the host sets it, or left alone.
enum class PrinterEnable : uint8_t { Untouched, Never, Follows };

/// A model's imprinter as the printer object reports it; -1 positions and characters when it
/// has none.
struct ImprinterInfo {
    PrinterEnable enable;
    int32_t lines;
    int32_t minPosition, maxPosition, maxCharacters;
};

struct ModelInfo {
    int32_t type;
    const char* enumName;
    const char* displayName;
    Family family;
    uint16_t capabilities;
    ImprinterInfo imprinter;
};

/// The model of a zebReaderType value, or nullptr outside 0 to 41.
const ModelInfo* modelInfo(int32_t type);
/// Driver family of a reader type (None for 0 and values outside the table).
Family familyOf(int32_t type);
/// The imprinter of a model; none outside the table.
const ImprinterInfo& imprinterOf(int32_t type);
/// True when `type` is in the table and has `capability`.
bool hasCapability(int32_t type, Capability capability);
/// Short name of a family ("OpScan", "ScanMark"...), as the tools print it.
const char* familyName(Family family);
/// True when this build speaks the family's wire protocol (reads sheets).
bool familyReads(Family family);

} // namespace zebreader81
