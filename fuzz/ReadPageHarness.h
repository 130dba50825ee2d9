// Runs one ReadPage of a scanner family against a ScriptedPeer that answers with the
// fuzzer's bytes. One peer and one open reader per process; each run is bounded by short
// timers and, for the waits that only a cancel ends, by CancelScan once the line has gone quiet.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zebreader81::fuzz {

enum class Family { OpScan, EZData, ScanMark, Pdi, Chatsworth };

/// First byte: the family's options (feeder, duplex, window mode...); the rest: the script.
int runReadPage(Family family, const uint8_t* data, std::size_t size);

} // namespace zebreader81::fuzz
