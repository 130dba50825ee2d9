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

} // namespace
} // namespace zebreader81::test
