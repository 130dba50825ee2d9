// OpScan command bytes and status replies.
#include "drivers/ncs/OpScanProtocol.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace OpScanProtocol;

// The commands a session sends are checked end to end; these are the values it does not send.
TEST(OpScanProtocol, CommandsOutsideASession)
{
    EXPECT_EQ(setModeCommand(-2), std::string("e\x04"));
    EXPECT_EQ(modeOfLetter('T'), 3);
    EXPECT_EQ(modeOfLetter('d'), 4);
    EXPECT_EQ(modeOfLetter('x'), std::nullopt);
    EXPECT_EQ(imprinterPositionCommand(24), std::string("124\x04"));
    EXPECT_EQ(imprinterPositionCommand(123), std::string("1123\x04"));
}

TEST(OpScanProtocol, FullStatusTakesStateAndModeAtTheirOffsets)
{
    Reply reply{};
    reply[StateOffset] = 'r';
    reply[ModeOffset] = 'S';
    auto status = parseFullStatus(reply);
    EXPECT_EQ(status.state, "R");
    EXPECT_EQ(status.mode, 6);
    reply[ModeOffset] = '?';
    EXPECT_EQ(parseFullStatus(reply).mode, std::nullopt);
}

TEST(OpScanProtocol, StatusBytesAreJudgedFirstMatchFirst)
{
    auto judge = [](uint8_t a, uint8_t b) {
        Reply reply{};
        reply[1] = a;
        reply[2] = b;
        return classifyStatus(reply);
    };
    EXPECT_EQ(judge(0, 0), StatusFault::None);
    EXPECT_EQ(judge(0x44, 0x70), StatusFault::None) << "only A bits 0-1 and B bits 0-3 count";
    EXPECT_EQ(judge(3, 0), StatusFault::SkewedPage);
    EXPECT_EQ(judge(1, 12), StatusFault::ThicknessError);
    EXPECT_EQ(judge(0, 12), StatusFault::PaperJam);
    EXPECT_EQ(judge(0x40, 0x44), StatusFault::ReadHeadError);
    EXPECT_EQ(judge(0, 1), StatusFault::Unreported);
    EXPECT_EQ(judge(0, 2), StatusFault::Unreported);
}

} // namespace
} // namespace zebreader81::test
