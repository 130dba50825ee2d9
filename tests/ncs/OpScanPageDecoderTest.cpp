// The OpScan page stream, decoded from bytes alone.
#include "drivers/ncs/OpScanPageDecoder.h"
#include "drivers/ncs/OpScanProtocol.h"

#include <gtest/gtest.h>

#include <random>

namespace zebreader81::test {
namespace {

using Step = OpScanPageDecoder::Step;

const std::string NAK(1, OpScanProtocol::NAK);

std::string run(int count, char c) { return NAK + static_cast<char>(64 + count) + c; }
std::string row(char letter, char mark) { return letter + std::string(48, mark); }

OpScanDecodeResult decode(const std::string& bytes, bool withSide2 = false)
{
    return decodeOpScanPage(bytes, withSide2);
}

TEST(OpScanPageDecoder, RunOf48ZerosFillsOneRowAndMovesToTheNext)
{
    const auto r = decode("a" + run(48, '0') + "a" + run(48, '3') + "\r");
    ASSERT_EQ(r.step, Step::Complete);
    EXPECT_EQ(r.errorNumber, 0);
    for (int c = 1; c <= 48; ++c)
        EXPECT_EQ(r.page.side1()(1, c), 0);
    for (int c = 1; c <= 47; ++c)
        EXPECT_EQ(r.page.side1()(2, c), 3) << c;
    EXPECT_EQ(r.page.side1()(2, 48), 0) << "the last column is always cleared";
    EXPECT_EQ(r.page.lines(1), 2);
}

TEST(OpScanPageDecoder, RunOf10StoresTenValuesAndCountsTowardsTheRow)
{
    const auto r = decode("a" + run(10, '5') + std::string(38, '1') + "a" + std::string(48, '0') + "\r");
    ASSERT_EQ(r.step, Step::Complete);
    for (int c = 1; c <= 10; ++c)
        EXPECT_EQ(r.page.side1()(1, c), 5);
    EXPECT_EQ(r.page.side1()(1, 11), 1);
    EXPECT_EQ(r.page.side1()(1, 47), 1);
}

TEST(OpScanPageDecoder, MarkCharactersMapToStrengthsAndTheLastColumnIsCleared)
{
    const auto r = decode(row('a', 'F') + "a09AE:" + std::string(43, '2') + "\n");
    ASSERT_EQ(r.step, Step::Complete) << "LF ends the page as CR does";
    for (int c = 1; c <= 47; ++c)
        EXPECT_EQ(r.page.side1()(1, c), 15);
    EXPECT_EQ(r.page.side1()(1, 48), 0);
    EXPECT_EQ(r.page.side1()(2, 1), 0);
    EXPECT_EQ(r.page.side1()(2, 2), 9);
    EXPECT_EQ(r.page.side1()(2, 3), 10);
    EXPECT_EQ(r.page.side1()(2, 4), 14);
    EXPECT_EQ(r.page.side1()(2, 5), 0) << "a colon stores nothing";
    EXPECT_EQ(r.page.side1()(2, 6), 2) << "but takes its column";
    EXPECT_EQ(r.page.side1()(3, 1), 0);
}

TEST(OpScanPageDecoder, ColonCountsTowardsTheFortyEightValues)
{
    const auto r = decode("a:" + std::string(47, '7') + "a\r");
    EXPECT_EQ(r.step, Step::Complete);
    EXPECT_EQ(r.page.side1()(1, 1), 0);
    EXPECT_EQ(r.page.lines(1), 2);
}

TEST(OpScanPageDecoder, SidesKeepTheirOwnRowsAndArraysShapes)
{
    const auto r = decode(row('a', '1') + row('b', '2') + row('a', '3') + "\r", true);
    ASSERT_EQ(r.step, Step::Complete);
    EXPECT_EQ(r.page.side1()(1, 1), 1);
    EXPECT_EQ(r.page.side1()(2, 1), 3);
    EXPECT_EQ(r.page.side2()(1, 1), 2);
    EXPECT_EQ(r.page.side2()(2, 1), 0);
    EXPECT_EQ(r.page.lines(1), 2);
    EXPECT_EQ(r.page.lines(2), 1);
    for (const auto* side : {&r.page.side1(), &r.page.side2()}) {
        EXPECT_EQ(side->LBound(1), 1);
        EXPECT_EQ(side->UBound(1), 150);
        EXPECT_EQ(side->LBound(2), 1);
        EXPECT_EQ(side->UBound(2), 48);
    }
    EXPECT_TRUE(decode("\r").page.side2().empty()) << "no side-2 array without Duplex and DuplexForm";
}

TEST(OpScanPageDecoder, BarcodesLoseTheirTwoLeadingCharacters)
{
    auto one = decode("cxx1234d\r");
    ASSERT_EQ(one.step, Step::Complete);
    ASSERT_EQ(one.page.barcodes().LBound(), 1);
    ASSERT_EQ(one.page.barcodes().UBound(), 1);
    EXPECT_EQ(one.page.barcodes()(1), "1234");

    auto two = decode(row('a', '0') + "cxx12dyy34d\r");
    ASSERT_EQ(two.page.barcodes().UBound(), 2);
    EXPECT_EQ(two.page.barcodes()(1), "12");
    EXPECT_EQ(two.page.barcodes()(2), "34");

    auto runs = decode("c00" + run(3, '7') + "d\r");
    EXPECT_EQ(runs.page.barcodes()(1), "777") << "run escapes work in barcode text too";
}

TEST(OpScanPageDecoder, PageWithoutBarcodeKeepsTheQuestionMark)
{
    const auto r = decode(row('a', '0') + "\r");
    ASSERT_EQ(r.page.barcodes().LBound(), 1);
    ASSERT_EQ(r.page.barcodes().UBound(), 1);
    EXPECT_EQ(r.page.barcodes()(1), "?");
}

TEST(OpScanPageDecoder, DIsAMarkOutsideBarcodeText)
{
    const auto r = decode("ad" + std::string(47, '0') + "\r");
    EXPECT_EQ(r.page.side1()(1, 1), 'd' - 55);
}

TEST(OpScanPageDecoder, ShortSideOneRowIsReportedWithCountAndLine)
{
    const auto r = decode(row('a', '0') + "a" + std::string(47, '0') + "a\r");
    ASSERT_EQ(r.step, Step::InvalidRow);
    EXPECT_EQ(r.page.rowFault().side, 1);
    EXPECT_EQ(r.page.rowFault().count, 47);
    EXPECT_EQ(r.page.rowFault().lineNumber, 2);
    EXPECT_EQ(r.consumed, 1u + 48 + 1 + 47 + 1) << "decoding stops at the letter";
    EXPECT_EQ(OpScanProtocol::invalidRowMessage(1, 47, 2),
              "The scanner reported an invalid number of bytes on side 1\r\n\r\n"
              "Invalid number of bytes: 47\r\nLine number: 2");
}

TEST(OpScanPageDecoder, ShortRowIsReportedByTheLetterThatFollowsIt)
{
    const auto r = decode(row('a', '0') + "b" + std::string(49, '0') + "b\r", true);
    ASSERT_EQ(r.step, Step::InvalidRow);
    EXPECT_EQ(r.page.rowFault().side, 2);
    EXPECT_EQ(r.page.rowFault().count, 49);
    EXPECT_EQ(r.page.rowFault().lineNumber, 1);

    const auto crossed = decode("a" + std::string(47, '0') + "b\r", true);
    ASSERT_EQ(crossed.step, Step::InvalidRow);
    EXPECT_EQ(crossed.page.rowFault().side, 2) << "a short side-1 row before a b is a side-2 report";
    EXPECT_EQ(crossed.page.rowFault().lineNumber, 0);
    EXPECT_EQ(OpScanProtocol::invalidRowMessage(2, 47, 0),
              "The scanner reported an invalid number of bytes  on side 2\r\n\r\n"
              "Invalid number of bytes: 47\r\nLine number: 0");
}

TEST(OpScanPageDecoder, RowsBeyond150AndSideTwoWithoutArrayAreSubscriptErrors)
{
    std::string rows;
    for (int i = 0; i < 150; ++i)
        rows += "a" + run(48, '1');
    const auto full = decode(rows + "\r");
    EXPECT_EQ(full.step, Step::Complete);
    EXPECT_EQ(full.page.lines(1), 150);
    EXPECT_EQ(decode(rows + "a:\r").step, Step::Complete) << "a colon on row 151 touches nothing";
    EXPECT_EQ(decode(rows + "a1\r").errorNumber, 9);

    EXPECT_EQ(decode(row('a', '0') + "b\r").step, Step::Complete) << "the letter alone is harmless";
    EXPECT_EQ(decode(row('a', '0') + "b1\r").errorNumber, 9);
    EXPECT_EQ(decode(row('a', '0') + "b1\r", true).errorNumber, 0);
}

TEST(OpScanPageDecoder, ArbitraryBytesEndInABoundedOutcome)
{
    std::mt19937 random(81);
    const std::string alphabet = std::string("abcd0123456789ABCDEF:\r\n") + NAK + "\x7f\xff";
    for (int i = 0; i < 3000; ++i) {
        std::string bytes(random() % 400, '\0');
        for (auto& b : bytes)
            b = (random() % 4 == 0) ? static_cast<char>(random() % 256)
                                    : alphabet[random() % alphabet.size()];
        const auto r = decode(bytes, random() % 2 == 0);
        EXPECT_LE(r.consumed, bytes.size());
        EXPECT_TRUE(r.errorNumber == 0 || r.errorNumber == 9) << r.errorNumber;
        EXPECT_GE(r.page.barcodes().UBound(), 1);
    }
}

} // namespace
} // namespace zebreader81::test
