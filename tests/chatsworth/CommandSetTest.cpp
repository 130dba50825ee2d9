// The card reader command set on bytes: answers, flags, the status byte and which bytes a card
// may hold (the bit layout is checked end to end against the simulator).
#include "drivers/ChatsworthCard.h"
#include "drivers/ChatsworthCommandSet.h"

#include <gtest/gtest.h>

namespace zebreader81::chatsworth {
namespace {

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
    EXPECT_EQ(setFlagsWord(0xAB), "SETFLAGSAB");
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
} // namespace zebreader81::chatsworth
