// The simulator framework's faults and records, seen from a real port: the same on a
// pseudo-terminal (real time) and on a memory line (virtual time).
#include "channel/ChannelPeers.h"
#include "channel/Clock.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

struct PeerFaults : ::testing::TestWithParam<sim::Transport> {
    PortMap ports;
    LinePeer peer{GetParam()};
    std::optional<clock::VirtualClock> time; // on a memory line
    frmComm fc;
    SerialControl& com = fc.mscComm;
    PeerFaults()
    {
        if (GetParam() == sim::Transport::Memory)
            time.emplace();
        ports.map(1, peer.path());
        com.CommPort(1);
        com.PortOpen(true);
        com.InputLen(0);
    }
};

TEST_P(PeerFaults, HangUpNowOrFromItsOwnHandlerEndsTheLineForTheDriver)
{
    peer.hangUp();
    EXPECT_TRUE(peer.hungUp());
    EXPECT_THROW(fc.DoEvents(), RuntimeError);
    peer.reply("nothing"); // a hung-up peer sends nothing and does not fail
    peer.hangUp();

    LinePeer hanging(GetParam(), "BYE");
    ports.map(2, hanging.path());
    com.PortOpen(false);
    com.CommPort(2);
    com.PortOpen(true);
    com.Output("BYE");
    fc.tmrScan.Interval(5000);
    fc.tmrScan.Enabled(true);
    EXPECT_THROW(
        {
            while (fc.tmrScan.Enabled())
                fc.DoEvents();
        },
        RuntimeError);
    EXPECT_TRUE(hanging.hungUp());
}

INSTANTIATE_TEST_SUITE_P(Line, PeerFaults, ::testing::Values(sim::Transport::Pty, sim::Transport::Memory),
                         [](const auto& line) {
                             return line.param == sim::Transport::Pty ? "Pty" : "Memory";
                         });

} // namespace
} // namespace zebreader81::test
