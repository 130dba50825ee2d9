// The EZData sheet stream: two bytes per row, one bit per column, ended by CR.
#include "FuzzSupport.h"
#include "core/basError.h"
#include "drivers/ezdata/EZDataSheet.h"

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    const int16_t mark = in.int16();
    ezdata::SheetDecoder decoder(mark);
    int32_t taken = 0;
    try {
        while (!in.empty()) {
            const auto step = decoder.feed(static_cast<char>(in.byte()));
            if (step == ezdata::SheetDecoder::Step::Invalid)
                break;
            ++taken;
            if (step == ezdata::SheetDecoder::Step::End)
                break;
        }
    } catch (const RuntimeError& e) {
        // A sheet longer than the array ends in the run-time error path, never elsewhere.
        FUZZ_CHECK(e.number() == err::SubscriptOutOfRange);
        FUZZ_CHECK(decoder.rowsDone() == ezdata::SheetDecoder::Rows);
    }
    FUZZ_CHECK(decoder.rowsDone() >= 0 && decoder.rowsDone() <= ezdata::SheetDecoder::Rows);
    FUZZ_CHECK(decoder.byteCount() == taken);
    const auto& sheet = decoder.sheet();
    for (int32_t r = 1; r <= sheet.UBound(1); ++r)
        for (int32_t c = 1; c <= sheet.UBound(2); ++c)
            FUZZ_CHECK(sheet(r, c) == 0 || sheet(r, c) == mark);
}
