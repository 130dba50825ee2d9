// A sheet as a simulator feeds it: mark strengths per cell, per side, and barcodes.
#pragma once

#include <string>
#include <vector>

namespace zebreader81::sim {

struct Sheet {
    /// side1[row][col], rows and columns from 0; strength 0 (blank) to 15 (darkest).
    std::vector<std::vector<int>> side1;
    /// Empty for a single-sided sheet.
    std::vector<std::vector<int>> side2;
    std::vector<std::string> barcodes;
};

} // namespace zebreader81::sim
