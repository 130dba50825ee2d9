// The serial control over a pseudo-terminal: opening, the receive buffer, sending, tracing.
#include "channel/ChannelPeers.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

int errorOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const RuntimeError& e) {
        return e.number();
    }
    return 0;
}

struct Control : ::testing::Test {
    PortMap ports;
    LinePeer peer;
    frmComm fc;
    SerialControl& com = fc.mscComm;
    Control() { ports.map(3, peer.path()); }
    void open()
    {
        com.CommPort(3);
        com.Settings("9600,E,7,1");
        com.PortOpen(true);
    }
    // Waits, the way drivers do, until `n` characters are waiting.
    bool waitFor(int n)
    {
        fc.tmrScan.Interval(5000);
        fc.tmrScan.Enabled(true);
        while (com.InBufferCount() < n && fc.tmrScan.Enabled())
            fc.DoEvents();
        const bool ok = fc.tmrScan.Enabled();
        fc.tmrScan.Enabled(false);
        return ok;
    }
};

TEST_F(Control, PortNumbersMapToDevicesAndMissingOnesAreInvalid)
{
    com.CommPort(4); // mapped to nothing by the fixture
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);
    EXPECT_FALSE(com.PortOpen());
    EXPECT_EQ(errorOf([&] { com.CommPort(0); }), err::InvalidPortNumber);
    ports.map(4, "/dev/null"); // exists, but is no terminal
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);

    open();
    EXPECT_TRUE(com.PortOpen());
    EXPECT_EQ(errorOf([&] { com.CommPort(5); }), err::PortAlreadyOpen);
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::PortAlreadyOpen);
    com.PortOpen(false);
    com.PortOpen(false); // closing a closed port does nothing
    EXPECT_EQ(errorOf([&] { com.Output("x"); }), err::DeviceNotOpen);
    EXPECT_EQ(errorOf([&] { com.InBufferCount(); }), err::DeviceNotOpen);
    EXPECT_EQ(errorOf([&] { com.Input(); }), err::DeviceNotOpen);
}

TEST_F(Control, SecondOpenOfTheSameDeviceIsRefusedUntilTheFirstCloses)
{
    open();
    frmComm other;
    ports.map(7, peer.path()); // another number for the same device changes nothing
    for (int16_t port : {3, 7}) {
        other.mscComm.CommPort(port);
        EXPECT_EQ(errorOf([&] { other.mscComm.PortOpen(true); }), err::PortAlreadyOpen);
        EXPECT_FALSE(other.mscComm.PortOpen());
    }
    com.PortOpen(false);
    other.mscComm.PortOpen(true);
    EXPECT_TRUE(other.mscComm.PortOpen());
    EXPECT_EQ(errorOf([&] { open(); }), err::PortAlreadyOpen);
}

TEST_F(Control, InputTakesWhatInputLenSaysFromTheBuffer)
{
    open();
    peer.reply("ABCDEF");
    ASSERT_TRUE(waitFor(6));
    EXPECT_EQ(com.InBufferCount(), 6);
    com.InputLen(1);
    EXPECT_EQ(com.Input(), "A");
    EXPECT_EQ(com.InBufferCount(), 5);
    com.InputLen(3);
    EXPECT_EQ(com.Input(), "BCD");
    peer.reply("GH");
    ASSERT_TRUE(waitFor(4));
    com.InputLen(0);
    EXPECT_EQ(com.Input(), "EFGH");
    EXPECT_EQ(com.InBufferCount(), 0);
    EXPECT_EQ(com.Input(), "");
    EXPECT_EQ(errorOf([&] { com.InputLen(-1); }), err::InvalidPropertyValue);
}

TEST_F(Control, EveryByteValueCrossesUntouched)
{
    open();
    std::string all;
    for (int b = 0; b < 256; ++b)
        all += static_cast<char>(b);
    com.Output(all);
    ASSERT_TRUE(peer.waitReceived(256, 5s));
    EXPECT_EQ(peer.received(), all);
    peer.reply(all);
    ASSERT_TRUE(waitFor(256));
    com.InputLen(0);
    EXPECT_EQ(com.Input(), all);
}

TEST_F(Control, OutputIsWrittenWholeEvenWhenTheLineBacksUp)
{
    open();
    // Far more than a pseudo-terminal holds, so the writes come back short and with EAGAIN.
    std::string big;
    for (int i = 0; i < 256 * 1024; ++i)
        big += static_cast<char>('a' + i % 26);
    com.Output(big);
    ASSERT_TRUE(peer.waitReceived(big.size(), 10s));
    EXPECT_EQ(peer.received(), big);
}

TEST_F(Control, TheTraceSeesEveryByteInOrderWithItsDirection)
{
    std::string trace;
    com.setTrace([&](bool sent, const std::string& bytes) { trace += (sent ? ">" : "<") + bytes; });
    open();
    com.Output("Q1");
    peer.reply("xyz");
    ASSERT_TRUE(waitFor(3));
    com.InputLen(1);
    com.Input();
    com.Output("Q2");
    peer.reply("w");
    ASSERT_TRUE(waitFor(3));
    com.InputLen(0);
    EXPECT_EQ(com.Input(), "yzw");
    EXPECT_EQ(trace, ">Q1<xyz>Q2<w");
    com.setTrace(nullptr);
    com.Output("Q3");
    EXPECT_EQ(trace, ">Q1<xyz>Q2<w");
}

TEST_F(Control, OpeningForgetsWhatArrivedWhileThePortWasClosed)
{
    open();
    com.PortOpen(false);
    peer.reply("stale");
    ASSERT_TRUE(peer.waitIdle(5s));
    open();
    EXPECT_EQ(com.InBufferCount(), 0);
}

} // namespace
} // namespace zebreader81::test
