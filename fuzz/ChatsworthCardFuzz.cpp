// A Chatsworth card in binary conversion: two bytes per row, one bit per column, ended by CR,
// every data byte 32 to 127, at most 126 rows.
#include "FuzzSupport.h"
#include "drivers/ChatsworthCard.h"

using namespace zebreader81;
using chatsworth::CardDecoder;

ZEBREADER_FUZZ(in)
{
    const int16_t mark = in.int16();
    CardDecoder card(mark, 126, CardDecoder::Bytes::Printable);
    int32_t taken = 0;
    CardDecoder::Step step = CardDecoder::Step::More;
    while (!in.empty() && step == CardDecoder::Step::More) {
        const uint8_t b = in.byte();
        step = card.feed(static_cast<char>(b));
        if (step == CardDecoder::Step::More || step == CardDecoder::Step::End)
            ++taken;
        if (step == CardDecoder::Step::Invalid)
            FUZZ_CHECK(b != 13 && (b < 32 || b > 127));
        if (step == CardDecoder::Step::TooLong)
            FUZZ_CHECK(card.rowsDone() == 126);
    }
    FUZZ_CHECK(card.rowsDone() >= 0 && card.rowsDone() <= 126);
    FUZZ_CHECK(card.byteCount() == taken);
    const auto& sheet = card.sheet();
    FUZZ_CHECK(sheet.UBound(1) == 126 && sheet.UBound(2) == 12);
    for (int32_t r = 1; r <= 126; ++r)
        for (int32_t c = 1; c <= 12; ++c)
            FUZZ_CHECK(sheet(r, c) == 0 || sheet(r, c) == mark);
}
