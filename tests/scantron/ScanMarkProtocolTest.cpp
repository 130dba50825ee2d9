// ScanMark wire protocol on bytes: commands, field records, the field walk, status replies and
// where each mark character lands.
#include "WindowArea.h"
#include "drivers/scantron/ScanMarkCommands.h"
#include "drivers/scantron/ScanMarkMarks.h"
#include "drivers/scantron/ScanMarkStatus.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace scanmark;

std::string f(const std::string& text) { return "\x1b" + text + "\r"; }

// Every command's bytes are checked end to end against the simulator; these are the values
// no sheet there sends.
TEST(ScanMarkCommands, NegativeThresholdAndCharacterBases)
{
    EXPECT_EQ(thresholdCommand(-7), f("THR= -7"));
    EXPECT_EQ(charBase(17), 0);
    EXPECT_EQ(charBase(11), 48);
}

TEST(ScanMarkCommands, WindowRecordRunsFromTheLowCornerWhateverTheGapSign)
{
    EXPECT_EQ(windowFieldCommand(1, *area(5, 4, 2, 3, 5, 1, 1, 1)), f("FRM=DK 1 5 3 11 7 L 4 5"));
    // Negative row gap: the far edge comes first; orientation 0 swaps the counts.
    EXPECT_EQ(windowFieldCommand(2, *area(20, 3, -4, 10, 2, -1, 2, 0)), f("FRM=DK 2 12 9 20 10 C 2 3"));
    // Gap 0: first and last are both the start; any orientation but 1 is "C".
    EXPECT_EQ(windowFieldCommand(1, *area(6, 3, 0, 2, 1, 1, 1, 2)), f("FRM=DK 1 6 2 6 2 C 1 3"));
    // Intermediate values inside 16 bits pass even near the limit (beyond it: error 6, end to end).
    EXPECT_EQ(windowFieldCommand(1, *area(1, 1, 32766, 1, 1, 1)), f("FRM=DK 1 1 1 1 1 L 1 1"));
}

TEST(ScanMarkCommands, ImprintTextIsIndentedByTheDistanceIfAny)
{
    EXPECT_EQ(imprintText(3, "AB"), "   AB");
    EXPECT_EQ(imprintText(-2, "AB"), "AB");
    EXPECT_EQ(printCommand("HI"), f("PRN$ 1 Y HI"));
}

std::string status(char state, char third, char code)
{
    return std::string("S") + state + third + "00000" + code + "000";
}

// The texts of the conditions are checked end to end; here the decode of the reply alone.
TEST(ScanMarkStatusDecode, ReadyBitJamBeforeDoubleFeedAndStatesWithoutAReport)
{
    EXPECT_EQ(decodeStatus(status('0', '0', 0x21)).result, 1);
    EXPECT_EQ(decodeStatus(status('0', '0', 0x20)).result, 0);
    EXPECT_FALSE(decodeStatus(status('0', '0', 0x21)).reports());
    EXPECT_EQ(decodeStatus(status('0', '0', 0x51)).title, "Paper Jam");
    EXPECT_EQ(decodeStatus(status('0', '0', 0x51)).result, -1);
    EXPECT_EQ(decodeStatus(status('0', '0', 0x11)).location, "ZEBReader81 - basScantron.CheckStatusST");
    EXPECT_EQ(decodeStatus(status('1', ' ', '0')).location, "ZEBReader81 - basScantron.heckStatusST");
    EXPECT_EQ(decodeStatus(status('2', '9', '7')).title, "Command Error");
    for (const auto& reply : {status('1', 'x', '0'), status('7', '0', '1')}) {
        EXPECT_EQ(decodeStatus(reply).result, -1);
        EXPECT_FALSE(decodeStatus(reply).reports());
    }
    EXPECT_EQ(decodeStatus("S0000000!00").result, -1) << "11 characters are never decoded";
}

TEST(ScanMarkMarks, WindowCursorFollowsOrientationFromTheLowCorner)
{
    std::vector<FieldEntry> plan{{1, 1, area(10, 2, -3, 4, 2, 2, 1, 1)},
                                 {1, 2, area(1, 0, 1, 1, 5, 1, 1, 1)}, // no cells
                                 {2, 3, area(3, 2, 1, 5, 2, 1, 2, 0)}};
    WindowCursor cursor(plan);
    std::vector<std::tuple<int, int, int>> cells;
    for (; !cursor.done(); cursor.advance()) {
        const auto c = cursor.cell();
        cells.emplace_back(c.side, c.row, c.col);
    }
    EXPECT_EQ(cells,
              (std::vector<std::tuple<int, int, int>>{
                  {1, 7, 4}, {1, 7, 6}, {1, 10, 4}, {1, 10, 6}, {2, 3, 5}, {2, 4, 5}, {2, 3, 6}, {2, 4, 6}}));
}

} // namespace
} // namespace zebreader81::test
