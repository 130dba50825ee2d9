#include "drivers/ezdata/EZDataSheet.h"

#include "core/basError.h"
#include "drivers/ezdata/EZDataProtocol.h"

#include <array>

namespace zebreader81::ezdata {

namespace {

// Mark bits of one half row, for its highest column first (bit 32 is the data flag).
constexpr std::array<uint8_t, 6> markBits{1, 2, 4, 8, 16, 64};

// A seven-bit line cannot carry bit 128: such a byte is noise, not data. A byte without the
// data flag (bit 32) is still read for its mark bits.
bool isDataByte(uint8_t b) { return (b & 0x80) == 0; }

} // namespace

SheetDecoder::SheetDecoder(int16_t markValue)
    : markValue_(markValue), sheet_(SafeArray<int16_t>::matrix(1, Rows, 1, Columns))
{
}

SheetDecoder::Step SheetDecoder::feed(char byte)
{
    const auto b = static_cast<uint8_t>(byte);
    if (byte == CR) {
        ++byteCount_;
        return Step::End;
    }
    if (!isDataByte(b))
        return Step::Invalid;
    if (row_ > Rows)
        err::raise(err::SubscriptOutOfRange);
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

} // namespace zebreader81::ezdata
