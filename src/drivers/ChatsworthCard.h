// A card in binary conversion: two bytes per timing-mark row, one bit per channel, ended by CR.
#pragma once

#include "zebreader81/SafeArray.h"

#include <cstdint>

namespace zebreader81::chatsworth {

/// Decodes a card one byte at a time into a rows by 12 array.
///
/// First byte of a row: bit 1 column 12, 2 column 11, 4 column 10, 8 column 9, 16 column 8,
/// 64 column 7. Second byte: the same bits for columns 6 to 1. Bit 32 is set on every data
/// byte (so none is CR) and is never a mark; a blank still counts as its half.
class CardDecoder {
public:
    static constexpr int32_t Columns = 12;

    /// Which bytes are data.
    enum class Bytes {
        SevenBit,  ///< any byte without bit 128
        Printable, ///< 32 to 127 only
    };

    enum class Step {
        More,    ///< byte taken, the card goes on
        End,     ///< CR: the card is complete
        Invalid, ///< not a data byte; nothing changed
        TooLong, ///< a row beyond the array; nothing changed
    };

    /// A marked cell receives `markValue`.
    CardDecoder(int16_t markValue, int32_t rows, Bytes accepted);

    Step feed(char byte);

    const SafeArray<int16_t>& sheet() const { return sheet_; }
    int32_t rows() const { return rows_; }
    /// Rows completed so far (the timing marks once the card has ended).
    int16_t rowsDone() const { return static_cast<int16_t>(row_ - 1); }
    /// Bytes taken so far, CR included.
    int32_t byteCount() const { return byteCount_; }

private:
    bool isData(uint8_t b) const;

    int16_t markValue_;
    int32_t rows_;
    Bytes accepted_;
    SafeArray<int16_t> sheet_;
    int16_t row_ = 1;
    bool secondHalf_ = false;
    int32_t byteCount_ = 0;
};

} // namespace zebreader81::chatsworth
