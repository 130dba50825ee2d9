// The simulator framework's faults and records, seen from a real port.
#include "channel/ChannelPeers.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

struct PeerFaults : ::testing::Test {
    PortMap ports;
    LinePeer peer;
    frmComm fc;
    SerialControl& com = fc.mscComm;
    PeerFaults()
    {
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

TEST_F(PeerFaults, StallLetsSomeBytesThroughThenNothingUntilCleared)
{
    peer.stallAfter(3);
    peer.reply("ABCDEF");
    peer.reply("GH");
    EXPECT_EQ(arrived(), "ABC");
    peer.clearFaults();
    peer.reply("IJ");
    EXPECT_EQ(arrived(), "IJ");
    EXPECT_EQ(peer.sent(), "ABCIJ");
}

TEST_F(PeerFaults, SilenceDropsRepliesButNotInjections)
{
    peer.replyAfter(100ms, "queued");
    peer.setSilent(true);
    peer.reply("dropped");
    peer.inject("noise");
    EXPECT_EQ(arrived(), "noise");
    peer.setSilent(false);
    peer.reply("back");
    EXPECT_EQ(arrived(), "back");
}

TEST_F(PeerFaults, GarblingReplacesTheNextBytesAndTheRecordShowsWhatWentOut)
{
    peer.garble(2, 7);
    peer.reply("ABCD");
    const std::string got = arrived();
    ASSERT_EQ(got.size(), 4u);
    EXPECT_NE(got.substr(0, 2), "AB");
    EXPECT_EQ(got.substr(2), "CD");
    EXPECT_EQ(peer.sent(), got);
}

TEST_F(PeerFaults, InjectionGoesAheadOfADelayedReply)
{
    peer.replyAfter(150ms, "late");
    peer.inject("now");
    EXPECT_EQ(arrived(), "nowlate");
}

TEST_F(PeerFaults, PacedRepliesGoOutOneCharacterAtATimeAtTheLineRate)
{
    EXPECT_FALSE(peer.setPaced("9600,Q,7,1"));
    EXPECT_FALSE(peer.setPaced("9600,E,7"));
    ASSERT_TRUE(peer.setPaced("9600,E,7,1")); // 10 bit times: about 1 ms per character
    const std::string reply(20, 'x');
    peer.reply(reply);
    EXPECT_EQ(arrived(), reply);
    const auto chunks = peer.sentChunks();
    ASSERT_GE(chunks.size(), 2u);
    EXPECT_GE(chunks.back().at - chunks.front().at, 15ms)
        << "20 characters cannot leave faster than the line";
}

TEST_F(PeerFaults, EveryByteFromTheDriverIsRecordedWithItsTime)
{
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

TEST_F(PeerFaults, HangUpNowEndsTheLineForTheDriver)
{
    peer.hangUp();
    EXPECT_TRUE(peer.hungUp());
    EXPECT_THROW(fc.DoEvents(), RuntimeError);
    peer.reply("nothing"); // a hung-up peer sends nothing and does not fail
    peer.hangUp();
}

TEST_F(PeerFaults, BabbleKeepsThePatternUnbrokenUntilCleared)
{
    peer.babble("abc");
    std::string got;
    com.InputLen(0);
    while (got.size() < 100000) {
        fc.DoEvents();
        got += com.Input();
    }
    peer.clearFaults();
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(got[i], "abc"[i % 3]) << "at " << i;
}

// A scanner that drops the line when told goodbye, from inside its own receive handler.
class HangingPeer : public sim::Peer {
public:
    HangingPeer() { start(); }
    ~HangingPeer() override { stop(); }

protected:
    void onReceive(std::string_view bytes) override
    {
        if (bytes.find("BYE") != std::string_view::npos)
            hangUp();
        else
            send("ok");
    }
};

TEST(PeerHangUp, FromItsOwnHandlerReachesTheDriver)
{
    PortMap ports;
    HangingPeer peer;
    ports.map(1, peer.path());
    frmComm fc;
    fc.mscComm.CommPort(1);
    fc.mscComm.PortOpen(true);
    fc.mscComm.Output("hello");
    fc.tmrScan.Interval(5000);
    fc.tmrScan.Enabled(true);
    while (fc.mscComm.InBufferCount() < 2 && fc.tmrScan.Enabled())
        fc.DoEvents();
    EXPECT_TRUE(fc.tmrScan.Enabled());
    fc.mscComm.Output("BYE");
    EXPECT_THROW(
        {
            while (fc.tmrScan.Enabled())
                fc.DoEvents();
        },
        RuntimeError);
    EXPECT_TRUE(peer.hungUp());
}

} // namespace
} // namespace zebreader81::test
