// Choosing a simulator: the simulated scanner of a reader type's family, with sample sheets.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zebreader81::sim {

/// A family this build can simulate.
struct SimulatedFamily {
    const char* name; ///< as zebreader-sim takes it: "opscan", "scanmark", "pdi", "ezdata", "chatsworth"
    int32_t defaultReaderType; ///< the model it stands for when only the family is named
    const char* description;
};

/// The families with a simulator.
std::vector<SimulatedFamily> simulatedFamilies();

/// Reader type for a family name or a model number (e.g. "opscan" or "14"); 0 when the
/// name is unknown or its family has no simulator.
int32_t simulatedReaderType(const std::string& familyOrModel);

/// True when the family of `readerType` has a simulator.
bool hasSimulator(int32_t readerType);

/// Starts the simulator of `readerType`'s family on a new pseudo-terminal, holding `sheets`;
/// nullptr when the family has none (no wire protocol).
std::unique_ptr<Peer> makeSimulator(int32_t readerType, std::vector<Sheet> sheets);

/// The line rate of a model's factory settings, for paced simulators.
struct LineRate {
    int32_t baud;
    double bitsPerChar; ///< start, data, parity and stop bits
};
LineRate defaultLine(int32_t readerType);

/// The sample sheets that suit `readerType`'s family (answer sheets, or 12-column cards).
std::vector<Sheet> sampleSheets(int32_t readerType);

} // namespace zebreader81::sim
