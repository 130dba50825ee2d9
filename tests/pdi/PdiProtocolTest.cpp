// The VMR138 wire protocol on bytes: row count, threshold reply and the sheet stream.
#include "drivers/pdi/PdiProtocol.h"
#include "core/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::pdi {
namespace {

TEST(PdiProtocol, RowCountRoundsHalvesToEven)
{
    // (waiting - 1) / 2: -0.5, 0.5, 1.5, 2.5 and 3.5 go to the even neighbour.
    const std::pair<int32_t, int32_t> cases[] = {{0, 0}, {1, 0}, {2, 0}, {3, 1},     {4, 2},
                                                 {6, 2}, {8, 4}, {9, 4}, {1001, 500}};
    for (const auto& [waiting, rows] : cases)
        EXPECT_EQ(rowCount(waiting), rows) << waiting;
}

TEST(PdiProtocol, ThresholdReplyIsUpperCaseHexadecimal)
{
    EXPECT_EQ(parseThreshold("F0"), 240);
    EXPECT_EQ(parseThreshold("0A"), 10);
    for (const char* bad : {"", "f0", "G1", " 1"})
        EXPECT_FALSE(parseThreshold(bad)) << bad;
    // Found by fuzz_pdi_protocol: a long run of digits overflowed the value.
    EXPECT_EQ(parseThreshold("7FFFFFFF"), 0x7FFFFFFF);
    EXPECT_FALSE(parseThreshold("8888888888888888F"));
    EXPECT_FALSE(parseThreshold("80000000"));
    EXPECT_EQ(thresholdSteps(247, 240), "+++++++");
    EXPECT_EQ(thresholdSteps(199, 202), "---");
}

TEST(PdiProtocol, SheetFillsFromTheLastRowUpwardAndSixtyFourStoresNothing)
{
    SheetDecoder sheet(241);
    sheet.start(3);
    // Row 3: columns 1, 6 and 12. Row 2: two empty halves. Row 1: 1 to 6, and 13 (no 64 bit): 7, 9, 10.
    for (const int c : {64 | 1 | 32, 64 | 32, 64, 64, 63, 13})
        sheet.add(static_cast<unsigned char>(c));
    const auto& m = sheet.marks();
    EXPECT_EQ(m.UBound(1), 500);
    EXPECT_EQ(m.UBound(2), 14);
    std::string rows;
    for (int r = 1; r <= 4; ++r, rows += '|')
        for (int c = 1; c <= 14; ++c)
            rows += m(r, c) == 241 ? 'x' : m(r, c) == 0 ? '.' : '?';
    EXPECT_EQ(rows, "xxxxxxx.xx....|..............|x....x.....x..|..............|");
}

TEST(PdiProtocol, MarksOutsideTheArrayAreSubscriptErrors)
{
    SheetDecoder sheet(1);
    sheet.start(501);
    EXPECT_NO_THROW(sheet.add(64)) << "an empty half-row stores nothing";
    try {
        sheet.add(1);
        FAIL() << "row 501 accepted";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), err::SubscriptOutOfRange);
    }
    SheetDecoder overrun(1);
    overrun.start(0); // more pairs than the LF announced
    EXPECT_THROW(overrun.add(2), RuntimeError);
}

} // namespace
} // namespace zebreader81::pdi
