// The card reader command set on bytes: frames, downloads, answers, flags, the status byte and
// the two-bytes-per-row card.
#include "drivers/chatsworth/CommandSet.h"
#include "drivers/chatsworth/CardDecoder.h"

#include <gtest/gtest.h>

namespace zebreader81::omr {
namespace {

TEST(CommandSet, DownloadsAndExtendedCommandsAreFramedByDc2)
{
    EXPECT_EQ(binaryDownload(), "\x12R7777\x12I00\x12"
                                "E");
    EXPECT_EQ(download({}), "\x12"
                            "E");
    EXPECT_EQ(frame("EF"), "\x12\x1b"
                           "EF\x12"
                           "E");
    EXPECT_EQ(setFlagsWord(0x03), "SETFLAGS03");
    EXPECT_EQ(setFlagsWord(0xAB), "SETFLAGSAB");
}

TEST(CommandSet, AnswersAreAcceptedRefusedOrOther)
{
    const std::pair<std::string, Reply> cases[] = {
        {"G\r", Reply::Accepted},
        {"?\r", Reply::Refused},
        {"\x12R77x?\r", Reply::Refused}, // the echo up to the refused character
        {"", Reply::Other},
        {"G", Reply::Other},
        {"G\r\r", Reply::Other},
        {"g\r", Reply::Other},
        {"?", Reply::Other},
    };
    for (const auto& [answer, reply] : cases)
        EXPECT_EQ(classify(answer), reply) << answer;
}

TEST(CommandSet, FlagsAreTwoHexDigitsAtPositionsFourAndFive)
{
    EXPECT_EQ(flagsOf(parseConfigText("22 00 80 EVEINL80 1.5")), 0x00);
    EXPECT_EQ(flagsOf(parseConfigText("22 3f 80 EVEINL80 1.5")), 0x3f);
    EXPECT_EQ(flagsOf(parseConfigText("22 C3")), 0xc3);
    for (const char* bad : {"22 0", "22 0G 80", "22 -1 80", ""})
        EXPECT_EQ(flagsOf(parseConfigText(bad)), std::nullopt) << bad;
    const auto c = parseConfigText("22 03 80 EVEINL80 1.5 ");
    EXPECT_EQ(c.state, "INL");
    EXPECT_EQ(c.thresholdCode, "80");
    EXPECT_EQ(c.decay, "1.5");
}

TEST(CommandSet, StatusByteComesWithCrAndMayFollowAG)
{
    EXPECT_EQ(statusOf("\x10\r"), 16);
    EXPECT_EQ(statusOf(std::string("\0\r", 2)), 0);
    EXPECT_EQ(statusOf("G\x21\r"), 33);
    EXPECT_EQ(statusOf("G\r"), 'G') << "two bytes: the first is the status";
    for (const char* bad : {"", "\r", "\x01", "\x01\x02\r", "X\x01\r"})
        EXPECT_EQ(statusOf(bad), std::nullopt) << bad;
}

std::string rowBytes(char first, char second) { return std::string{first, second}; }

TEST(CardDecoder, TwoBytesARowOneBitAColumnAndBlankRowsCount)
{
    // Row 1: columns 12 and 7 (bits 1 and 64 of the first byte); row 2 blank; row 3: columns 6
    // and 1 (bits 1 and 64 of the second byte); row 4: every column (127, 127).
    CardDecoder card(7, 126, CardDecoder::Bytes::Printable);
    const std::string data =
        rowBytes(0x61, 0x20) + rowBytes(0x20, 0x20) + rowBytes(0x20, 0x61) + rowBytes(0x7f, 0x7f) + "\r";
    for (std::size_t i = 0; i + 1 < data.size(); ++i)
        ASSERT_EQ(card.feed(data[i]), CardDecoder::Step::More) << i;
    ASSERT_EQ(card.feed('\r'), CardDecoder::Step::End);
    EXPECT_EQ(card.rowsDone(), 4);
    EXPECT_EQ(card.byteCount(), 9);
    const auto& s = card.sheet();
    ASSERT_EQ(s.UBound(1), 126);
    ASSERT_EQ(s.UBound(2), 12);
    for (int32_t c = 1; c <= 12; ++c) {
        EXPECT_EQ(s(1, c), c == 12 || c == 7 ? 7 : 0) << c;
        EXPECT_EQ(s(2, c), 0) << c;
        EXPECT_EQ(s(3, c), c == 6 || c == 1 ? 7 : 0) << c;
        EXPECT_EQ(s(4, c), 7) << c;
    }
    EXPECT_EQ(s(5, 1), 0);
}

TEST(CardDecoder, PrintableCardsTakeOnly32To127SevenBitOnesAnyByteBelow128)
{
    for (int b : {0, 10, 31, 128, 200, 255}) {
        CardDecoder printable(1, 126, CardDecoder::Bytes::Printable);
        EXPECT_EQ(printable.feed(static_cast<char>(b)), CardDecoder::Step::Invalid) << b;
        EXPECT_EQ(printable.byteCount(), 0);
        CardDecoder sevenBit(1, 150, CardDecoder::Bytes::SevenBit);
        EXPECT_EQ(sevenBit.feed(static_cast<char>(b)),
                  b < 128 ? CardDecoder::Step::More : CardDecoder::Step::Invalid)
            << b;
    }
    CardDecoder edges(1, 126, CardDecoder::Bytes::Printable);
    EXPECT_EQ(edges.feed(32), CardDecoder::Step::More);
    EXPECT_EQ(edges.feed(127), CardDecoder::Step::More);
}

TEST(CardDecoder, ARowBeyondTheLastIsTooLongAndChangesNothing)
{
    CardDecoder card(1, 126, CardDecoder::Bytes::Printable);
    for (int i = 0; i < 2 * 126; ++i)
        ASSERT_EQ(card.feed('!'), CardDecoder::Step::More);
    EXPECT_EQ(card.feed('!'), CardDecoder::Step::TooLong);
    EXPECT_EQ(card.rowsDone(), 126);
    EXPECT_EQ(card.feed('\r'), CardDecoder::Step::End) << "a card of 126 rows is whole";
}

} // namespace
} // namespace zebreader81::omr
