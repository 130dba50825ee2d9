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
    // Everything that arrives until the peer has nothing more to send.
    std::string arrived()
    {
        EXPECT_TRUE(peer.waitIdle(5s));
        fc.tmrScan.Interval(50);
        fc.tmrScan.Enabled(true);
        while (fc.tmrScan.Enabled())
            fc.DoEvents();
        return com.Input();
    }
};

TEST_P(PeerFaults, StallSilenceInjectionGarbleAndTheRecords)
{
    peer.stallAfter(3); // some bytes through, then nothing until cleared
    peer.reply("ABCDEF");
    peer.reply("GH");
    EXPECT_EQ(arrived(), "ABC");
    peer.clearFaults();
    peer.reply("IJ");
    EXPECT_EQ(arrived(), "IJ");

    peer.replyAfter(100ms, "queued"); // silence drops replies but not injections
    peer.setSilent(true);
    peer.reply("dropped");
    peer.inject("noise");
    EXPECT_EQ(arrived(), "noise");
    peer.setSilent(false);
    peer.replyAfter(150ms, "late"); // an injection goes ahead of a delayed reply
    peer.inject("now");
    EXPECT_EQ(arrived(), "nowlate");

    peer.garble(2, 7);
    peer.reply("ABCD");
    const std::string got = arrived();
    ASSERT_EQ(got.size(), 4u);
    EXPECT_NE(got.substr(0, 2), "AB");
    EXPECT_EQ(got.substr(2), "CD");
    EXPECT_EQ(peer.sent(), "ABCIJnoisenowlate" + got);
    EXPECT_EQ(peer.sentCount(), 21u);

    com.Output("one");
    ASSERT_TRUE(peer.waitReceived(3, 5s));
    com.Output("two");
    ASSERT_TRUE(peer.waitReceived(6, 5s));
    const auto chunks = peer.receivedChunks();
    ASSERT_GE(chunks.size(), 2u);
    EXPECT_LE(chunks.front().at, chunks.back().at);
    EXPECT_EQ(peer.received(), "onetwo");
    peer.clearReceived();
    EXPECT_EQ(peer.receivedCount(), 0u);
}

TEST_P(PeerFaults, PacedRepliesGoOutAtTheLineRateAndBabbleKeepsItsPattern)
{
    EXPECT_FALSE(peer.setPaced("9600,Q,7,1") || peer.setPaced("9600,E,7"));
    ASSERT_TRUE(peer.setPaced("9600,E,7,1")); // 10 bit times: about 1 ms per character
    const std::string reply(20, 'x');
    peer.reply(reply);
    EXPECT_EQ(arrived(), reply);
    const auto chunks = peer.sentChunks();
    ASSERT_GE(chunks.size(), 2u);
    EXPECT_GE(chunks.back().at - chunks.front().at, 15ms)
        << "20 characters cannot leave faster than the line";

    peer.babble("abc");
    std::string got;
    while (got.size() < 10000) {
        fc.DoEvents();
        got += com.Input();
    }
    peer.clearFaults();
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(got[i], "abc"[i % 3]) << "at " << i;
}

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
