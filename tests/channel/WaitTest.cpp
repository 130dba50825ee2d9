// The wait idiom on a memory line and a virtual clock: the one-shot timer, DoEvents blocking
// instead of spinning, the host's yield, cancel, hang-up; and the clock seam itself.
#include "channel/ChannelPeers.h"
#include "channel/Clock.h"
#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

struct Wait : ::testing::Test {
    sim::MemoryLines lines;
    clock::VirtualClock& time = lines.clock();
    PortMap ports;
    LinePeer peer;
    clsZEBReader reader;
    frmComm& fc = Reader::fComm(reader);
    SerialControl& com = fc.mscComm;
    Wait()
    {
        ports.map(2, peer.path());
        com.CommPort(2);
        com.PortOpen(true);
    }
    // The drivers' idiom, with or without the timer: 0 when the data came, -1 when the timer ran
    // out, -2 on CancelScan.
    int waitFor(bool timer = true)
    {
        fc.tmrScan.Enabled(timer);
        while (com.InBufferCount() < 1) {
            if (timer && !fc.tmrScan.Enabled())
                return -1;
            fc.DoEvents();
            if (reader.CancelScan())
                return -2;
        }
        fc.tmrScan.Enabled(false);
        return 0;
    }
};

TEST_F(Wait, ASilentPortTimesOutOnTheIntervalAndEachTurnWaitsItsPace)
{
    struct Case {
        int32_t interval;
        std::optional<std::chrono::milliseconds> pace;
        int turns; // a spinning wait would turn many thousand times
    };
    for (const Case& c : {Case{1000, std::nullopt, 1}, Case{500, 5ms, 100}, Case{300, 0ms, 1}}) {
        SCOPED_TRACE(c.interval);
        fc.tmrScan.Interval(c.interval);
        const auto start = time.now();
        int turns = 0;
        fc.tmrScan.Enabled(true);
        while (com.InBufferCount() == 0 && fc.tmrScan.Enabled()) {
            fc.DoEvents(c.pace);
            ++turns;
        }
        EXPECT_EQ(time.now() - start, std::chrono::milliseconds(c.interval));
        EXPECT_EQ(turns, c.turns);
    }
    EXPECT_EQ(wait::awaitBytes(fc, 1), wait::Outcome::TimedOut);
    EXPECT_FALSE(wait::byteWithin(fc, 20ms));
    EXPECT_EQ(wait::waitingAfter(com, 250), 0);
    int yields = 0;
    fc.setYield([&] { ++yields; });
    fc.tmrScan.Interval(300);
    EXPECT_EQ(waitFor(), -1);
    EXPECT_EQ(yields, 6) << "a long wait hands the host its turns every 50 ms";
    com.PortOpen(false); // nothing to wait on but the timer
    fc.tmrScan.Interval(100);
    fc.tmrScan.Enabled(true);
    while (fc.tmrScan.Enabled())
        fc.DoEvents();
    EXPECT_EQ(time.elapsed(), 1800ms + 300ms + 20ms + 250ms + 300ms + 100ms)
        << "each wait takes its time, and only that";
}

TEST_F(Wait, CancelScanEndsAWaitWithoutTimerEvenWhenAnEarlierWaitTookTheWake)
{
    peer.whenReceived(
        0, [&] { reader.CancelScan(true); }, 50ms);
    EXPECT_EQ(waitFor(false), -2);
    EXPECT_EQ(time.elapsed(), 50ms);

    // A cancel during a timed wait that does not look at it (an acknowledgement)...
    reader.CancelScan(false);
    peer.whenReceived(
        0, [&] { reader.CancelScan(true); }, 20ms);
    fc.tmrScan.Interval(200);
    fc.tmrScan.Enabled(true);
    while (com.InBufferCount() == 0 && fc.tmrScan.Enabled())
        fc.DoEvents();
    // ...still ends the wait for a hand-fed sheet that follows, not the late data.
    peer.replyAfter(3s, "x");
    EXPECT_EQ(waitFor(false), -2);
    EXPECT_EQ(com.InBufferCount(), 0);
}

TEST(Clock, IsTheSteadyClockUnlessThisThreadInstalledAVirtualOneAndDrivesTheTimer)
{
    EXPECT_EQ(clock::virtualClock(), nullptr);
    const auto before = std::chrono::steady_clock::now();
    frmComm::Sleep(20);
    EXPECT_GE(clock::now() - before, 20ms);
    {
        clock::VirtualClock outer;
        {
            clock::VirtualClock inner;
            EXPECT_EQ(clock::virtualClock(), &inner);
            frmComm::Sleep(-1); // nothing
            frmComm::Sleep(3600 * 1000);
            EXPECT_EQ(inner.elapsed(), 1h);
            inner.advanceTo(inner.now() - 1s); // never back
            EXPECT_EQ(inner.elapsed(), 1h);
        }
        EXPECT_EQ(clock::virtualClock(), &outer);
        EXPECT_EQ(outer.elapsed(), 0s);
        std::thread other([] { EXPECT_EQ(clock::virtualClock(), nullptr) << "one clock per thread"; });
        other.join();

        OneShotTimer t; // reads false once run out; restarts only from stopped
        EXPECT_EQ(std::pair(t.Interval(), t.Enabled()), std::pair(10000, false));
        t.Interval(60);
        t.Enabled(true);
        frmComm::Sleep(40);
        t.Enabled(true); // still running: not restarted
        EXPECT_TRUE(t.Enabled());
        frmComm::Sleep(20);
        EXPECT_FALSE(t.Enabled());
        t.Enabled(true); // ran out: starts again
        EXPECT_TRUE(t.Enabled());
        t.Enabled(false);
        EXPECT_FALSE(t.Enabled() || t.deadline().has_value());
    }
    EXPECT_EQ(clock::virtualClock(), nullptr);
}

} // namespace
} // namespace zebreader81::test
