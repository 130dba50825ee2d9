#include "drivers/ChatsworthCard.h"

#include "drivers/ChatsworthCommandSet.h"

#include <array>

namespace zebreader81::chatsworth {

namespace {

// Mark bits of one half row, for its highest column first (bit 32 is the data flag).
constexpr std::array<uint8_t, 6> markBits{1, 2, 4, 8, 16, 64};

} // namespace

CardDecoder::CardDecoder(int16_t markValue, int32_t rows, Bytes accepted)
    : markValue_(markValue), rows_(rows), accepted_(accepted),
      sheet_(SafeArray<int16_t>::matrix(1, rows, 1, Columns))
{
}

bool CardDecoder::isData(uint8_t b) const
{
    if (accepted_ == Bytes::Printable)
        return b >= 32 && b <= 127;
    return (b & 0x80) == 0;
}

CardDecoder::Step CardDecoder::feed(char byte)
{
    const auto b = static_cast<uint8_t>(byte);
    if (byte == CR) {
        ++byteCount_;
        return Step::End;
    }
    if (!isData(b))
        return Step::Invalid;
    if (row_ > rows_)
        return Step::TooLong;
    ++byteCount_;

    const int32_t highest = secondHalf_ ? 6 : 12;
    for (std::size_t k = 0; k < markBits.size(); ++k)
        if (b & markBits[k])
            sheet_(row_, highest - static_cast<int32_t>(k)) = markValue_;

    if (secondHalf_)
        ++row_;
    secondHalf_ = !secondHalf_;
    return Step::More;
}

} // namespace zebreader81::chatsworth
