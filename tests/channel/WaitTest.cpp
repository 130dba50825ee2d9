// The wait idiom: the one-shot timer, DoEvents blocking instead of spinning, cancel, hang-up.
#include "channel/ChannelPeers.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>
#include <thread>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Wait : ::testing::Test {
    PortMap ports;
    LinePeer peer;
    frmComm fc;
    SerialControl& com = fc.mscComm;
    Wait()
    {
        ports.map(2, peer.path());
        com.CommPort(2);
        com.PortOpen(true);
    }
    // The drivers' idiom; returns the number of turns, -1 on time-out.
    int waitFor(int n, std::optional<std::chrono::milliseconds> pace = std::nullopt)
    {
        int turns = 0;
        fc.tmrScan.Enabled(true);
        while (com.InBufferCount() < n) {
            fc.DoEvents(pace);
            ++turns;
            if (!fc.tmrScan.Enabled())
                return -1;
        }
        fc.tmrScan.Enabled(false);
        return turns;
    }
};

TEST_F(Wait, SilentPortTimesOutAfterTheIntervalWithoutSpinning)
{
    fc.tmrScan.Interval(1000);
    const auto start = Clock::now();
    fc.tmrScan.Enabled(true);
    int turns = 0;
    while (com.InBufferCount() == 0 && fc.tmrScan.Enabled()) {
        fc.DoEvents();
        ++turns;
    }
    EXPECT_FALSE(fc.tmrScan.Enabled());
    EXPECT_GE(Clock::now() - start, 1000ms) << "the timer ran out early";
    EXPECT_LE(turns, 3) << "an unpaced wait blocks until the timer runs out";

    // A paced wait wakes once per pace at most; a spinning one would turn many thousand times.
    fc.tmrScan.Interval(500);
    fc.tmrScan.Enabled(true);
    turns = 0;
    while (com.InBufferCount() == 0 && fc.tmrScan.Enabled()) {
        fc.DoEvents(5ms);
        ++turns;
    }
    EXPECT_LE(turns, 500 / 5 + 20);
    // A pace of zero (SleepTime 0) must not turn into a busy loop either.
    fc.tmrScan.Interval(300);
    fc.tmrScan.Enabled(true);
    turns = 0;
    while (fc.tmrScan.Enabled()) {
        fc.DoEvents(0ms);
        ++turns;
    }
    EXPECT_LE(turns, 3);
}

TEST_F(Wait, DoEventsReturnsAtOnceForInputAlreadyThere)
{
    peer.reply("ABCD");
    ASSERT_TRUE(peer.waitIdle(5s));
    fc.tmrScan.Interval(30000);
    fc.tmrScan.Enabled(true);
    fc.DoEvents(); // takes the four bytes into the buffer; must not then sit in poll
    EXPECT_TRUE(fc.tmrScan.Enabled());
    EXPECT_EQ(com.InBufferCount(), 4);
}

TEST_F(Wait, AReplyInPiecesEndsTheWaitWithoutATimeOut)
{
    fc.tmrScan.Interval(30000);
    peer.replyAfter(20ms, "AB");
    peer.replyAfter(20ms, "C");
    peer.replyAfter(20ms, "D");
    const int turns = waitFor(4);
    EXPECT_GT(turns, 0);
    EXPECT_LE(turns, 8);
    com.InputLen(0);
    EXPECT_EQ(com.Input(), "ABCD");
}

TEST_F(Wait, HangUpDuringAWaitIsAReportedRunTimeError)
{
    HostScope errors;
    fc.tmrScan.Interval(30000);
    peer.hangUpAfter(50ms);
    const bool ok = trap("ZEBReader81 - basTest.Wait", false, [&] { return waitFor(1) > 0; });
    EXPECT_FALSE(ok);
    const auto& r = errors.host->only();
    EXPECT_EQ(r.number, err::PortIo);
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.location, "basTest.Wait");
    EXPECT_EQ(r.description, err::description(err::PortIo));

    // The port can still be closed; the device is gone for good.
    com.PortOpen(false);
    EXPECT_THROW(com.PortOpen(true), RuntimeError);
}

TEST_F(Wait, HangUpWhileWaitingWithoutATimerAndWhileReading)
{
    peer.hangUpAfter(50ms);
    // No timer: only input, cancel or the hang-up can end this.
    EXPECT_THROW(
        {
            while (com.InBufferCount() == 0)
                fc.DoEvents();
        },
        RuntimeError);
    EXPECT_THROW(com.InBufferCount(), RuntimeError);
    EXPECT_THROW(com.Input(), RuntimeError);
    EXPECT_THROW(com.Output("x"), RuntimeError);
}

TEST(WaitCancel, CancelScanFromAnotherThreadEndsAWaitWithoutTimer)
{
    PortMap ports;
    LinePeer peer;
    ports.map(1, peer.path());
    clsZEBReader reader;
    auto& fc = Reader::fComm(reader);
    fc.mscComm.CommPort(1);
    fc.mscComm.PortOpen(true);
    std::thread host([&] {
        std::this_thread::sleep_for(50ms);
        reader.CancelScan(true);
    });
    bool cancelled = false;
    while (fc.mscComm.InBufferCount() == 0) {
        fc.DoEvents();
        if (reader.CancelScan()) {
            cancelled = true;
            break;
        }
    }
    host.join();
    EXPECT_TRUE(cancelled);
}

TEST(WaitCancel, ACancelSeenByAnEarlierTimedWaitStillEndsTheNextUntimedOne)
{
    PortMap ports;
    LinePeer peer;
    ports.map(1, peer.path());
    clsZEBReader reader;
    auto& fc = Reader::fComm(reader);
    fc.mscComm.CommPort(1);
    fc.mscComm.PortOpen(true);
    // The cancel comes during a timed wait that does not look at it (an acknowledgement)...
    fc.tmrScan.Interval(200);
    fc.tmrScan.Enabled(true);
    std::thread host([&] {
        std::this_thread::sleep_for(20ms);
        reader.CancelScan(true);
    });
    while (fc.mscComm.InBufferCount() == 0 && fc.tmrScan.Enabled())
        fc.DoEvents();
    host.join();
    // ...and the wait for a hand-fed sheet that follows must still end on it. The peer's late
    // data only keeps a faulty build from hanging.
    peer.replyAfter(3s, "x");
    bool cancelled = false;
    while (fc.mscComm.InBufferCount() == 0) {
        fc.DoEvents();
        if (reader.CancelScan()) {
            cancelled = true;
            break;
        }
    }
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(fc.mscComm.InBufferCount(), 0) << "the wait ended on the late data, not on the cancel";
}

TEST_F(Wait, TheHostYieldRunsWhileWaiting)
{
    int yields = 0;
    fc.setYield([&] { ++yields; });
    fc.tmrScan.Interval(300);
    EXPECT_EQ(waitFor(1), -1);
    EXPECT_GE(yields, 2) << "a long wait hands the host its turns";
}

TEST(Timer, ReadsFalseOnceRunOutAndRestartsOnlyFromStopped)
{
    OneShotTimer t;
    EXPECT_EQ(t.Interval(), 10000);
    EXPECT_FALSE(t.Enabled());
    t.Interval(60);
    t.Enabled(true);
    EXPECT_TRUE(t.Enabled());
    std::this_thread::sleep_for(40ms);
    t.Enabled(true); // still running: not restarted
    std::this_thread::sleep_for(40ms);
    EXPECT_FALSE(t.Enabled());
    t.Enabled(true); // ran out: starts again
    EXPECT_TRUE(t.Enabled());
    t.Enabled(false);
    EXPECT_FALSE(t.Enabled());
    EXPECT_FALSE(t.deadline().has_value());
}

} // namespace
} // namespace zebreader81::test
