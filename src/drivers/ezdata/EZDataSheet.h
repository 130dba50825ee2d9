// EZData sheet stream: the card reader's binary conversion, 150 rows, ended by CR.
#pragma once

#include "drivers/ChatsworthCard.h"

#include <cstdint>

namespace zebreader81::ezdata {

/// Decodes the sheet stream one byte at a time into a 150 by 12 array (bit layout in
/// chatsworth::CardDecoder). A byte without the data flag is still read for its marks; only a byte
/// with bit 128 is refused.
class SheetDecoder {
public:
    static constexpr int32_t Rows = 150;
    static constexpr int32_t Columns = chatsworth::CardDecoder::Columns;

    enum class Step {
        More,    ///< byte taken, the sheet goes on
        End,     ///< CR: the sheet is complete
        Invalid, ///< bit 128 set: not a seven-bit character; nothing changed
    };

    /// A marked cell receives `markValue`.
    explicit SheetDecoder(int16_t markValue);

    /// Takes one byte. Data for a row beyond the array raises run-time error 9.
    Step feed(char byte);

    const SafeArray<int16_t>& sheet() const { return card_.sheet(); }
    /// Rows completed so far (the timing marks once the sheet has ended).
    int16_t rowsDone() const { return card_.rowsDone(); }

private:
    chatsworth::CardDecoder card_;
};

} // namespace zebreader81::ezdata
