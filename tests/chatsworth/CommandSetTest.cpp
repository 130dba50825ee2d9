// The card reader command set on bytes: answers, flags, the status byte and which bytes a card
// may hold (the bit layout is checked end to end against the simulator).
#include "drivers/ChatsworthCard.h"
#include "drivers/ChatsworthCommandSet.h"

#include <gtest/gtest.h>

namespace zebreader81::chatsworth {
namespace {

TEST(CommandSet, FlagsAreTwoHexDigitsAtPositionsFourAndFive)
{
    EXPECT_EQ(flagsOf(parseConfigText("22 00 80 EVEINL80 1.5")), 0x00);
    EXPECT_EQ(flagsOf(parseConfigText("22 3f 80 EVEINL80 1.5")), 0x3f);
    EXPECT_EQ(flagsOf(parseConfigText("22 C3")), 0xc3);
    for (const char* bad : {"22 0", "22 0G 80", "22 -1 80", ""})
        EXPECT_EQ(flagsOf(parseConfigText(bad)), std::nullopt) << bad;
    EXPECT_EQ(setFlagsWord(0xAB), "SETFLAGSAB");
}

} // namespace
} // namespace zebreader81::chatsworth
