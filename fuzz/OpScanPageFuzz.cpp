// The OpScan page stream: whatever the scanner sends after DC1, decoded as ReadPageNCS does.
#include "FuzzSupport.h"
#include "drivers/ncs/OpScanPageDecoder.h"

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    const bool withSide2 = (in.byte() & 1) != 0;
    const auto stream = in.rest();
    const auto r = decodeOpScanPage(stream, withSide2);

    FUZZ_CHECK(r.consumed <= stream.size());
    FUZZ_CHECK(r.errorNumber == 0 || r.step == OpScanPageDecoder::Step::More);
    const auto& side1 = r.page.side1();
    FUZZ_CHECK(side1.LBound(1) == 1 && side1.UBound(1) == OpScanPageDecoder::Rows);
    FUZZ_CHECK(side1.LBound(2) == 1 && side1.UBound(2) == OpScanPageDecoder::Columns);
    FUZZ_CHECK(r.page.side2().empty() != withSide2);
    const auto& codes = r.page.barcodes();
    FUZZ_CHECK(codes.LBound() == 1 && codes.UBound() >= 1);
    // Column 48 is cleared as each row completes, so it never holds a mark.
    for (int32_t row = 1; row <= OpScanPageDecoder::Rows; ++row) {
        FUZZ_CHECK(side1(row, OpScanPageDecoder::Columns) == 0);
        if (withSide2)
            FUZZ_CHECK(r.page.side2()(row, OpScanPageDecoder::Columns) == 0);
    }
    if (r.step == OpScanPageDecoder::Step::InvalidRow) {
        const auto& f = r.page.rowFault();
        FUZZ_CHECK(f.side == 1 || f.side == 2);
        FUZZ_CHECK(f.count != OpScanPageDecoder::Columns);
    }
}
