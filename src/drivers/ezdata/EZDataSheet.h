// EZData sheet stream: two bytes per timing-mark row, one bit per column, ended by CR.
#pragma once

#include "zebreader81/SafeArray.h"

#include <cstdint>

namespace zebreader81::ezdata {

/// Decodes the sheet stream one byte at a time into a 150 by 12 array.
///
/// First byte of a row: bit 1 column 12, 2 column 11, 4 column 10, 8 column 9, 16 column 8,
/// 64 column 7. Second byte: the same bits for columns 6 to 1. The scanner sets bit 32 on
/// every data byte (so none is CR); a blank marks nothing but still counts as its half.
class SheetDecoder {
public:
    static constexpr int32_t Rows = 150;
    static constexpr int32_t Columns = 12;

    enum class Step {
        More,    ///< byte taken, the sheet goes on
        End,     ///< CR: the sheet is complete
        Invalid, ///< bit 128 set: not a seven-bit character; nothing changed
    };

    /// A marked cell receives `markValue`.
    explicit SheetDecoder(int16_t markValue);

    /// Takes one byte. Data for a row beyond the array raises run-time error 9.
    Step feed(char byte);

    const SafeArray<int16_t>& sheet() const { return sheet_; }
    /// Rows completed so far (the timing marks once the sheet has ended).
    int16_t rowsDone() const { return static_cast<int16_t>(row_ - 1); }
    /// Bytes taken so far, CR included.
    int32_t byteCount() const { return byteCount_; }

private:
    int16_t markValue_;
    SafeArray<int16_t> sheet_;
    int16_t row_ = 1;
    bool secondHalf_ = false;
    int32_t byteCount_ = 0;
};

} // namespace zebreader81::ezdata
