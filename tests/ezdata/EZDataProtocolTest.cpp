// The EZData wire protocol on bytes: frames, the configuration text, answers, the sheet stream.
#include "drivers/ezdata/EZDataProtocol.h"
#include "core/basError.h"
#include "drivers/ezdata/EZDataSheet.h"
#include "drivers/ezdata/basNCSEZData.h"

#include <gtest/gtest.h>

namespace zebreader81::ezdata {
namespace {

TEST(EZDataProtocol, ConfigurationFieldsComeFromTheirPositions)
{
    const auto c = parseConfigText("ABCDEFGHIJKLMNOPQRSTUV");
    EXPECT_EQ(c.lineCode, "AB");
    EXPECT_EQ(c.flags, "DE");
    EXPECT_EQ(c.timing, "GH");
    EXPECT_EQ(c.state, "MNO");
    EXPECT_EQ(c.thresholdCode, "PQ");
    EXPECT_EQ(c.decay, "STU");

    const auto shortText = parseConfigText("22 03 80 01 INL7");
    EXPECT_EQ(shortText.thresholdCode, "7");
    EXPECT_EQ(shortText.decay, "");
}

TEST(EZDataProtocol, ThresholdCodesStandForZeroToNine)
{
    for (int16_t t = 0; t <= 9; ++t) {
        const std::string code = std::to_string(60 + 2 * t);
        EXPECT_EQ(thresholdOfCode(code), t) << code;
        EXPECT_TRUE(basNCSEZData::CheckThresholdNCSEZ(t, code)) << code;
        EXPECT_FALSE(basNCSEZData::CheckThresholdNCSEZ(static_cast<int16_t>((t + 1) % 10), code)) << code;
    }
    for (const char* other : {"61", "58", "80", "79", "6", "", "6A", " 60"}) {
        EXPECT_EQ(thresholdOfCode(other), std::nullopt) << other;
        // Any other code stands for the wanted value itself.
        EXPECT_TRUE(basNCSEZData::CheckThresholdNCSEZ(4, other)) << other;
    }
}

TEST(EZDataProtocol, AnswerFaultsInTheOrderTheyAreChecked)
{
    const std::string text(22, 'x');
    EXPECT_EQ(checkAnswer("G" + text + "\r", 24), AnswerFault::None);
    EXPECT_EQ(checkAnswer("?" + text + "\r", 24), AnswerFault::Refused);
    EXPECT_EQ(checkAnswer("?", 2), AnswerFault::Refused);
    EXPECT_EQ(checkAnswer("X" + text + "\r", 24), AnswerFault::NotAccepted);
    EXPECT_EQ(checkAnswer("", 2), AnswerFault::NotAccepted);
    EXPECT_EQ(checkAnswer("G" + text.substr(1) + "\r", 24), AnswerFault::BrokenOff) << "CR too early";
    EXPECT_EQ(checkAnswer("G" + text + "x", 24), AnswerFault::BrokenOff) << "no CR";
    EXPECT_EQ(checkAnswer("G\r\r", 2), AnswerFault::BrokenOff);
    EXPECT_EQ(checkAnswer("G", 2), AnswerFault::BrokenOff);
    EXPECT_EQ(checkAnswer("G\r", 2), AnswerFault::None);
}

// Marked columns of one row of a decoded sheet.
std::vector<int> markedColumns(const SafeArray<int16_t>& sheet, int32_t row)
{
    std::vector<int> cols;
    for (int32_t c = 1; c <= 12; ++c)
        if (sheet(row, c) != 0)
            cols.push_back(c);
    return cols;
}

TEST(EZDataSheet, EachBitMarksItsColumn)
{
    // Bits 1, 2, 4, 8, 16, 64 of the first byte are columns 12 to 7, of the second 6 to 1.
    const std::pair<uint8_t, int> bits[] = {{1, 0}, {2, 1}, {4, 2}, {8, 3}, {16, 4}, {64, 5}};
    for (const auto& [bit, offset] : bits) {
        SheetDecoder d(7);
        EXPECT_EQ(d.feed(static_cast<char>(0x20 | bit)), SheetDecoder::Step::More);
        EXPECT_EQ(d.feed(static_cast<char>(0x20 | bit)), SheetDecoder::Step::More);
        EXPECT_EQ(markedColumns(d.sheet(), 1), (std::vector<int>{6 - offset, 12 - offset})) << int(bit);
        EXPECT_EQ(d.sheet()(1, 6 - offset), 7);
    }
}

TEST(EZDataSheet, BlankRowsCountAndCrEndsTheSheet)
{
    SheetDecoder d(3);
    for (char b : std::string("  \x7f\x7f  "))
        ASSERT_EQ(d.feed(b), SheetDecoder::Step::More);
    EXPECT_EQ(d.feed('\r'), SheetDecoder::Step::End);
    EXPECT_EQ(d.rowsDone(), 3);
    EXPECT_TRUE(markedColumns(d.sheet(), 1).empty());
    EXPECT_EQ(markedColumns(d.sheet(), 2).size(), 12u);
    EXPECT_TRUE(markedColumns(d.sheet(), 3).empty());
    EXPECT_EQ(d.sheet().UBound(1), 150);
    EXPECT_EQ(d.sheet().UBound(2), 12);
    EXPECT_EQ(d.byteCount(), 7);
}

TEST(EZDataSheet, HalfARowIsNotCounted)
{
    SheetDecoder d(1);
    d.feed(' ');
    d.feed(' ');
    d.feed('!');
    EXPECT_EQ(d.feed('\r'), SheetDecoder::Step::End);
    EXPECT_EQ(d.rowsDone(), 1);
    EXPECT_EQ(markedColumns(d.sheet(), 2), (std::vector<int>{12}));
}

TEST(EZDataSheet, EightBitBytesAreRefusedAndBytesWithoutTheDataBitStillCount)
{
    SheetDecoder d(1);
    for (char b : {'\x80', '\xa1', '\xff'})
        EXPECT_EQ(d.feed(b), SheetDecoder::Step::Invalid) << int(static_cast<uint8_t>(b));
    EXPECT_EQ(d.byteCount(), 0);
    EXPECT_EQ(d.feed('\x01'), SheetDecoder::Step::More);
    EXPECT_EQ(d.feed('\x40'), SheetDecoder::Step::More);
    EXPECT_EQ(markedColumns(d.sheet(), 1), (std::vector<int>{1, 12}));
}

TEST(EZDataSheet, DataBeyondRow150IsSubscriptOutOfRange)
{
    SheetDecoder d(1);
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(d.feed(' '), SheetDecoder::Step::More);
    EXPECT_EQ(d.rowsDone(), 150);
    try {
        d.feed(' ');
        FAIL() << "no error";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 9);
    }
    EXPECT_EQ(d.feed('\r'), SheetDecoder::Step::End);
}

} // namespace
} // namespace zebreader81::ezdata
