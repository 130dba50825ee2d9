// The serial control: the Settings text, opening, the receive buffer, sending; on a
// memory line, and on a pseudo-terminal for what only a real line shows; a hang-up on both.
#include "channel/ChannelPeers.h"
#include "channel/Clock.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <thread>
#include <tuple>
#include <unistd.h>

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

TEST(SettingsText, ParsesWellFormedTextAndRefusesTheRestKeepingTheOld)
{
    struct Case {
        const char* text;
        int32_t baud;
        char parity;
        int data;
        float stop;
    };
    for (const Case& c :
         {Case{"9600,N,8,1", 9600, 'N', 8, 1.0f}, Case{"110,o,5,1.5", 110, 'O', 5, 1.5f},
          Case{"19200,M,6,2", 19200, 'M', 6, 2.0f}, Case{" 57600 , s , 7 , 1 ", 57600, 'S', 7, 1.0f},
          Case{"12345,E,4,1", 12345, 'E', 4, 1.0f}}) {
        SCOPED_TRACE(c.text);
        const auto s = LineSettings::parse(c.text);
        EXPECT_EQ(std::tuple(s.baud, s.parity, s.dataBits, s.stopBits),
                  std::tuple(c.baud, c.parity, c.data, c.stop));
    }
    SerialControl com;
    com.Settings("4800,E,7,1");
    for (const char* text : {"9600,X,8,1", "9600,N,8", "9600,N,8,1,1", "", "abc,N,8,1", "9600,N,x,1",
                             "9600,,8,1", "9600,NE,8,1", "9600,N,8,3", "9600,N,8,1.25", "9600,N,9,1",
                             "9600,N,3,1", "0,N,8,1", "-9600,N,8,1", "9600.5,N,8,1"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorOf([&] { com.Settings(text); }), err::InvalidPropertyValue);
        EXPECT_EQ(com.Settings(), "4800,E,7,1");
    }
    for (int16_t h : {-1, 0, 1, 2, 4, 3})
        EXPECT_EQ(errorOf([&] { com.Handshaking(h); }), h < 0 || h > 3 ? err::InvalidPropertyValue : 0);
    EXPECT_EQ(com.Handshaking(), 3);
}

// COM3 on a line to a peer the test drives: a memory line unless the transport says otherwise.
template <sim::Transport transport> struct Line : ::testing::Test {
    PortMap ports;
    LinePeer peer{transport};
    frmComm fc;
    SerialControl& com = fc.mscComm;
    Line() { ports.map(3, peer.path()); }
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
    // A hang-up of the peer, now or from its own handler, ends the line for the driver.
    void hangUpEndsTheLine()
    {
        open();
        peer.hangUp();
        EXPECT_TRUE(peer.hungUp());
        EXPECT_THROW(fc.DoEvents(), RuntimeError);
        peer.reply("nothing"); // a hung-up peer sends nothing and does not fail
        peer.hangUp();

        LinePeer hanging(transport, "BYE");
        ports.map(2, hanging.path());
        com.PortOpen(false);
        com.CommPort(2);
        com.PortOpen(true);
        com.Output("BYE");
        EXPECT_THROW(waitFor(1), RuntimeError);
        EXPECT_TRUE(hanging.hungUp());
    }
};
struct Control : Line<sim::Transport::Memory> {
    clock::VirtualClock time;
};
using OnAPty = Line<sim::Transport::Pty>;

TEST_F(Control, PortNumbersMapToDevicesAndMissingOnesAreInvalid)
{
    com.CommPort(4); // mapped to nothing by the fixture
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);
    EXPECT_FALSE(com.PortOpen());
    EXPECT_EQ(errorOf([&] { com.CommPort(0); }), err::InvalidPortNumber);
    for (const char* path : {"/dev/null", "memory://nothing"}) { // no terminal; no line of that name
        ports.map(4, path);
        EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);
    }

    open();
    EXPECT_TRUE(com.PortOpen());
    EXPECT_EQ(errorOf([&] { com.InputLen(-1); }), err::InvalidPropertyValue);
    EXPECT_EQ(errorOf([&] { com.CommPort(5); }), err::PortAlreadyOpen);
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::PortAlreadyOpen);
    com.PortOpen(false);
    com.PortOpen(false); // closing a closed port does nothing
    for (auto use : std::initializer_list<std::function<void()>>{
             [&] { com.Output("x"); }, [&] { com.InBufferCount(); }, [&] { com.Input(); }})
        EXPECT_EQ(errorOf(use), err::DeviceNotOpen);
}

TEST_F(Control, AHangUpEndsTheLine) { hangUpEndsTheLine(); }

TEST_F(OnAPty, AHangUpEndsTheLine) { hangUpEndsTheLine(); }

TEST_F(OnAPty, OpeningForgetsWhatCameWhileClosedEveryByteCrossesWholeAndASecondOpenIsRefused)
{
    open();
    com.PortOpen(false);
    peer.reply("stale");
    ASSERT_TRUE(peer.waitIdle(5s));
    open();
    EXPECT_EQ(com.InBufferCount(), 0);

    // Every byte value, far more than a pseudo-terminal holds, both ways: the writes come back
    // short and with EAGAIN, the reads find the line full; still every byte crosses.
    std::string big;
    for (int i = 0; i < 256 * 1024; ++i)
        big += static_cast<char>(i % 251);
    com.Output(big);
    ASSERT_TRUE(peer.waitReceived(big.size(), 10s));
    EXPECT_EQ(peer.received(), big);
    peer.reply(big);
    std::string got;
    fc.tmrScan.Interval(10000);
    fc.tmrScan.Enabled(true);
    while (got.size() < big.size() && fc.tmrScan.Enabled()) {
        fc.DoEvents();
        got += com.Input();
    }
    EXPECT_EQ(got, big);

    // A second open of the same device is refused until the first closes.
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

// A line whose other end stops reading and then goes: the write that waits for room, the next
// count and the next write fail with 8020 instead of blocking.
TEST(PtyWithoutReader, AWriteWaitingForRoomAndWhatFollowsRaiseWhenTheLineGoes)
{
    int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    PortMap ports;
    ports.map(3, ptsname(master));
    SerialControl com;
    com.CommPort(3);
    com.PortOpen(true);
    std::thread closer([&] {
        // Some room once, so that the write goes on after a wait; then none until the line goes.
        std::this_thread::sleep_for(100ms);
        char taken[8192];
        EXPECT_GT(::read(master, taken, sizeof taken), 0);
        std::this_thread::sleep_for(100ms);
        ::close(std::exchange(master, -1));
    });
    EXPECT_EQ(errorOf([&] { com.Output(std::string(1 << 20, 'x')); }), err::PortIo);
    closer.join();
    EXPECT_EQ(errorOf([&] { com.InBufferCount(); }), err::PortIo);
    EXPECT_EQ(errorOf([&] { com.Output("x"); }), err::PortIo);
}

TEST_F(OnAPty, SettingsReachTheLineInRawModeAndWhatNoLineCarriesIsRefused)
{
    com.CommPort(3);
    // 4 data bits, 1.5 stop bits with more than 5 data bits, 2 stop bits with 5 data bits.
    for (const char* text : {"9600,N,4,1", "9600,N,8,1.5", "9600,E,5,2"}) {
        SCOPED_TRACE(text);
        com.Settings(text); // the text itself is fine
        EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::CommStateNotSet);
        EXPECT_FALSE(com.PortOpen());
    }
    constexpr tcflag_t otherRate = 0010000; // the kernel's code for a rate given in numbers
    struct Case {
        const char* text;
        int16_t handshaking;
        tcflag_t rate;
        tcflag_t cflags; // of CSTOPB, CMSPAR, CRTSCTS: pseudo-terminals keep no data bits or parity
        tcflag_t iflags;
    };
    // The first opens the port with its settings; the others change them on the open port.
    for (const Case& c :
         {Case{"9600,N,8,1", 0, B9600, 0, 0}, Case{"110,E,7,2", 1, B110, CSTOPB, IXON | IXOFF},
          Case{"1200,M,7,1", 2, B1200, CMSPAR | CRTSCTS, 0},
          Case{"230400,S,8,2", 3, B230400, CMSPAR | CSTOPB | CRTSCTS, IXON | IXOFF},
          Case{"31250,O,5,1.5", 0, otherRate, CSTOPB, 0}}) {
        SCOPED_TRACE(c.text);
        com.Handshaking(c.handshaking);
        com.Settings(c.text);
        if (!com.PortOpen())
            com.PortOpen(true);
        // The line as another opener sees it (root only: the exclusive open keeps others out).
        const int fd = ::open(peer.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        termios t{};
        if (fd >= 0 && tcgetattr(fd, &t) == 0) {
            EXPECT_EQ(t.c_cflag & CBAUD, c.rate);
            EXPECT_EQ(t.c_cflag & (CSTOPB | CMSPAR | CRTSCTS), c.cflags);
            EXPECT_EQ(t.c_iflag & (IXON | IXOFF | ICRNL | ISTRIP | INPCK), c.iflags);
            EXPECT_EQ(t.c_lflag & (ICANON | ECHO | ISIG), 0u);
            EXPECT_EQ(t.c_oflag & OPOST, 0u);
        }
        if (fd >= 0)
            ::close(fd);
    }
    // On an open port the assignment fails and the port keeps its settings.
    EXPECT_EQ(errorOf([&] { com.Settings("9600,N,4,1"); }), err::CommStateNotSet);
    EXPECT_EQ(com.Settings(), "31250,O,5,1.5");
    com.Output("ok");
    EXPECT_TRUE(peer.waitReceived(2, 5s));
}

} // namespace
} // namespace zebreader81::test
