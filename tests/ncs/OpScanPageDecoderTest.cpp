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

// The first rows of a side, a character per column (hex digits up to 15, then on from '0' +
// value), rows ended by '|'.
std::string picture(const SafeArray<int16_t>& side, int32_t rows)
{
    std::string out;
    for (int32_t r = 1; r <= rows; ++r, out += '|')
        for (int32_t c = 1; c <= 48; ++c)
            out += side(r, c) < 16 ? "0123456789ABCDEF"[side(r, c)] : static_cast<char>('0' + side(r, c));
    return out;
}
std::string rep(int n, char c) { return std::string(static_cast<std::size_t>(n), c); }
const std::string zeros = rep(48, '0') + "|";

TEST(OpScanPageDecoder, PagesDecodeIntoRowsOfFortyEightAndBarcodes)
{
    struct Page {
        std::string bytes;
        bool withSide2;
        std::string side1, side2; // the first rows; the last column is always cleared
        int32_t lines1, lines2;
        std::string barcodes; // each ended by '|'
    };
    const Page pages[] = {
        {"a" + run(48, '0') + "a" + run(48, '3') + "\r", false, zeros + rep(47, '3') + "0|", "", 2, 0, "?|"},
        {"a" + run(10, '5') + rep(38, '1') + "a" + zeros + "\r", false, rep(10, '5') + rep(37, '1') + "0|",
         "", 2, 0, "?|"},
        // A colon stores nothing but takes its column; LF ends the page as CR does.
        {row('a', 'F') + "a09AE:" + rep(43, '2') + "\n", false,
         rep(47, 'F') + "0|09AE0" + rep(42, '2') + "0|" + zeros, "", 2, 0, "?|"},
        {"a:" + rep(47, '7') + "a\r", false, "0" + rep(46, '7') + "0|", "", 2, 0, "?|"},
        {row('a', '1') + row('b', '2') + row('a', '3') + "\r", true,
         rep(47, '1') + "0|" + rep(47, '3') + "0|", rep(47, '2') + "0|" + zeros, 2, 1, "?|"},
        {"ad" + rep(47, '0') + "\r", false, "]" + rep(47, '0') + "|", "", 1, 0, "?|"}, // 'd' is a mark here
        // Barcodes lose their two leading characters; run escapes work in their text too.
        {"cxx1234d\r", false, "", "", 0, 0, "1234|"},
        {row('a', '0') + "cxx12dyy34d\r", false, zeros, "", 1, 0, "12|34|"},
        {"c00" + run(3, '7') + "d\r", false, "", "", 0, 0, "777|"},
    };
    for (const auto& p : pages) {
        SCOPED_TRACE(p.bytes);
        const auto r = decode(p.bytes, p.withSide2);
        ASSERT_EQ(r.step, Step::Complete);
        EXPECT_EQ(r.errorNumber, 0);
        EXPECT_EQ(picture(r.page.side1(), static_cast<int32_t>(p.side1.size() / 49)), p.side1);
        if (p.withSide2) {
            EXPECT_EQ(picture(r.page.side2(), static_cast<int32_t>(p.side2.size() / 49)), p.side2);
            EXPECT_EQ(r.page.side2().UBound(1), 150);
            EXPECT_EQ(r.page.side2().UBound(2), 48);
        } else {
            EXPECT_TRUE(r.page.side2().empty()) << "no side-2 array without Duplex and DuplexForm";
        }
        EXPECT_EQ(r.page.side1().LBound(1), 1);
        EXPECT_EQ(r.page.side1().UBound(1), 150);
        EXPECT_EQ(r.page.side1().LBound(2), 1);
        EXPECT_EQ(r.page.side1().UBound(2), 48);
        EXPECT_EQ(r.page.lines(1), p.lines1);
        EXPECT_EQ(r.page.lines(2), p.lines2);
        std::string barcodes;
        ASSERT_EQ(r.page.barcodes().LBound(), 1);
        for (int32_t i = 1; i <= r.page.barcodes().UBound(); ++i)
            barcodes += r.page.barcodes()(i) + "|";
        EXPECT_EQ(barcodes, p.barcodes);
    }
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
