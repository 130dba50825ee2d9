#include "sim/chatsworth/CardData.h"

namespace zebreader81::sim {

namespace {

// Where each column's mark goes: byte 0 or 1 of the row and the bit within it. Column 12 is
// bit 1 of the first byte, column 7 bit 64; columns 6 to 1 the same in the second byte.
struct ColumnBit {
    int byte;
    unsigned char bit;
};
constexpr ColumnBit columns[12] = {{1, 64}, {1, 16}, {1, 8}, {1, 4}, {1, 2}, {1, 1},
                                   {0, 64}, {0, 16}, {0, 8}, {0, 4}, {0, 2}, {0, 1}};

} // namespace

std::string cardData(const Sheet& sheet, std::size_t rows)
{
    std::string out;
    for (std::size_t r = 0; r < sheet.side1.size() && r < rows; ++r) {
        const auto& row = sheet.side1[r];
        unsigned char pair[2] = {0x20, 0x20};
        for (std::size_t c = 0; c < 12 && c < row.size(); ++c)
            if (row[c] > 0)
                pair[columns[c].byte] |= columns[c].bit;
        out += static_cast<char>(pair[0]);
        out += static_cast<char>(pair[1]);
    }
    return out;
}

} // namespace zebreader81::sim
