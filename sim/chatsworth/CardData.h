// A card's data in binary conversion, as the Chatsworth reader and the EZData send it.
#pragma once

#include "sim/Sheet.h"

#include <cstddef>
#include <string>

namespace zebreader81::sim {

/// Two bytes per row of side1 (at most `rows` rows), 12 columns, bit 32 set on every byte;
/// without the closing CR.
std::string cardData(const Sheet& sheet, std::size_t rows = static_cast<std::size_t>(-1));

} // namespace zebreader81::sim
