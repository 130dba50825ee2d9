// The VMR138 wire protocol on bytes: status faults, row count, threshold reply, sheet stream.
#include "drivers/pdi/PdiProtocol.h"
#include "engine/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::pdi {
namespace {

TEST(PdiProtocol, StatusFaultsTakeFrontSensorThenBackSensorThenJam)
{
    EXPECT_FALSE(statusFault(0));
    EXPECT_FALSE(statusFault(4 | 8 | 16 | 32)) << "bits answered at init or a read under way are no fault";
    const auto front = statusFault(2 | 1 | 64);
    ASSERT_TRUE(front);
    EXPECT_NE(front->find("front sensor error.  Either a form is present or the scanner is improperly "
                          "closed. Please clear any form from the front"),
              std::string::npos);
    const auto back = statusFault(1 | 64);
    ASSERT_TRUE(back);
    EXPECT_NE(back->find("back sensor error.  Either a form is present or the scanner is improperly "
                         "closed.  Please clear any form from inside"),
              std::string::npos);
    EXPECT_EQ(statusFault(64),
              "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry.");
}

TEST(PdiProtocol, RowCountRoundsHalvesToEven)
{
    // waiting -> (waiting - 1) / 2
    EXPECT_EQ(rowCount(0), 0); // -0.5
    EXPECT_EQ(rowCount(1), 0);
    EXPECT_EQ(rowCount(2), 0); // 0.5
    EXPECT_EQ(rowCount(3), 1);
    EXPECT_EQ(rowCount(4), 2); // 1.5
    EXPECT_EQ(rowCount(6), 2); // 2.5
    EXPECT_EQ(rowCount(8), 4); // 3.5
    EXPECT_EQ(rowCount(1001), 500);
}

TEST(PdiProtocol, ThresholdReplyIsUpperCaseHexadecimal)
{
    EXPECT_EQ(parseThreshold("F0"), 240);
    EXPECT_EQ(parseThreshold("0A"), 10);
    EXPECT_EQ(parseThreshold("C0"), 192);
    EXPECT_FALSE(parseThreshold(""));
    EXPECT_FALSE(parseThreshold("f0"));
    EXPECT_FALSE(parseThreshold("G1"));
    EXPECT_FALSE(parseThreshold(std::string("\0F", 2)));
}

TEST(PdiProtocol, PlusStepsDownToALowerWantedValueAndMinusUp)
{
    EXPECT_EQ(thresholdSteps(247, 240), "+++++++");
    EXPECT_EQ(thresholdSteps(199, 202), "---");
    EXPECT_EQ(thresholdSteps(240, 240), "");
}

TEST(PdiProtocol, SheetFillsFromTheLastRowUpwardWithTheMarkValue)
{
    SheetDecoder sheet(241);
    EXPECT_FALSE(sheet.started());
    sheet.start(3);
    for (const unsigned char c : {64 | 1 | 32, 64 | 32, /**/ 64, 64, /**/ 1 | 2 | 4 | 8 | 16 | 32, 13})
        sheet.add(c);
    const auto& m = sheet.marks();
    EXPECT_EQ(m.LBound(1), 1);
    EXPECT_EQ(m.UBound(1), 500);
    EXPECT_EQ(m.LBound(2), 1);
    EXPECT_EQ(m.UBound(2), 14);
    // First pair: row 3, columns 1 and 6, then 12.
    EXPECT_EQ(m(3, 1), 241);
    EXPECT_EQ(m(3, 6), 241);
    EXPECT_EQ(m(3, 12), 241);
    // Second pair: two 64s store nothing but still take row 2.
    for (int c = 1; c <= 14; ++c)
        EXPECT_EQ(m(2, c), 0) << c;
    // Third pair: all six in the first half; 13 (no 64 bit) gives columns 7, 9, 10.
    for (int c = 1; c <= 6; ++c)
        EXPECT_EQ(m(1, c), 241) << c;
    EXPECT_EQ(m(1, 7), 241);
    EXPECT_EQ(m(1, 8), 0);
    EXPECT_EQ(m(1, 9), 241);
    EXPECT_EQ(m(1, 10), 241);
    EXPECT_EQ(m(1, 13), 0);
    int marked = 0;
    for (int r = 1; r <= 500; ++r)
        for (int c = 1; c <= 14; ++c)
            marked += m(r, c) != 0;
    EXPECT_EQ(marked, 12);
}

TEST(PdiProtocol, MarksBeyondTheArrayAreSubscriptErrors)
{
    SheetDecoder tooMany(1);
    tooMany.start(501);
    EXPECT_NO_THROW(tooMany.add(64)) << "an empty half-row stores nothing";
    try {
        tooMany.add(1);
        FAIL() << "row 501 accepted";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), err::SubscriptOutOfRange);
    }

    SheetDecoder overrun(1);
    overrun.start(1);
    overrun.add(64);
    overrun.add(64);
    EXPECT_THROW(overrun.add(2), RuntimeError) << "more pairs than announced run past row 1";
}

} // namespace
} // namespace zebreader81::pdi
