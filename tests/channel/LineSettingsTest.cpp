// The Settings text: what it accepts as text (380 otherwise), and what a port makes of it.
#include "channel/ChannelPeers.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

namespace zebreader81::test {
namespace {

int errorOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const RuntimeError& e) {
        return e.number();
    }
    return 0;
}

TEST(SettingsText, ParsesEveryWellFormedText)
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
        EXPECT_EQ(s.baud, c.baud);
        EXPECT_EQ(s.parity, c.parity);
        EXPECT_EQ(s.dataBits, c.data);
        EXPECT_EQ(s.stopBits, c.stop);
    }
}

TEST(SettingsText, MalformedTextIsAnInvalidPropertyValueAndLeavesTheOldOne)
{
    frmComm fc;
    fc.mscComm.Settings("4800,E,7,1");
    for (const char* text : {"9600,X,8,1", "9600,N,8", "9600,N,8,1,1", "", "abc,N,8,1", "9600,N,x,1",
                             "9600,,8,1", "9600,NE,8,1", "9600,N,8,3", "9600,N,8,1.25", "9600,N,9,1",
                             "9600,N,3,1", "0,N,8,1", "-9600,N,8,1", "9600.5,N,8,1"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorOf([&] { fc.mscComm.Settings(text); }), err::InvalidPropertyValue);
        EXPECT_EQ(fc.mscComm.Settings(), "4800,E,7,1");
    }
}

TEST(SettingsText, HandshakingIsZeroToThree)
{
    frmComm fc;
    for (int16_t h : {0, 1, 2, 3})
        EXPECT_EQ(errorOf([&] { fc.mscComm.Handshaking(h); }), 0);
    EXPECT_EQ(errorOf([&] { fc.mscComm.Handshaking(4); }), err::InvalidPropertyValue);
    EXPECT_EQ(errorOf([&] { fc.mscComm.Handshaking(-1); }), err::InvalidPropertyValue);
    EXPECT_EQ(fc.mscComm.Handshaking(), 3);
}

struct OnAPort : ::testing::Test {
    PortMap ports;
    LinePeer peer;
    frmComm fc;
    OnAPort()
    {
        ports.map(1, peer.path());
        fc.mscComm.CommPort(1);
    }

    // The slave's state as another opener sees it; nullopt when the exclusive open keeps a
    // non-root test out.
    std::optional<termios> lineState() const
    {
        const int fd = ::open(peer.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            return std::nullopt;
        termios t{};
        const bool ok = tcgetattr(fd, &t) == 0;
        ::close(fd);
        return ok ? std::optional(t) : std::nullopt;
    }
};

TEST_F(OnAPort, TheDeviceRefusesWhatNoLineCanCarry)
{
    // 4 data bits, 1.5 stop bits with more than 5 data bits, 2 stop bits with 5 data bits.
    for (const char* text : {"9600,N,4,1", "9600,N,8,1.5", "9600,E,5,2"}) {
        SCOPED_TRACE(text);
        fc.mscComm.Settings(text); // the text itself is fine
        EXPECT_EQ(errorOf([&] { fc.mscComm.PortOpen(true); }), err::CommStateNotSet);
        EXPECT_FALSE(fc.mscComm.PortOpen());
    }
    // On an open port the assignment fails and the port keeps its settings.
    fc.mscComm.Settings("9600,N,8,1");
    fc.mscComm.PortOpen(true);
    EXPECT_EQ(errorOf([&] { fc.mscComm.Settings("9600,N,4,1"); }), err::CommStateNotSet);
    EXPECT_EQ(fc.mscComm.Settings(), "9600,N,8,1");
    EXPECT_TRUE(fc.mscComm.PortOpen());
    fc.mscComm.Output("ok");
    EXPECT_TRUE(peer.waitReceived(2, std::chrono::seconds(5)));
}

TEST_F(OnAPort, SettingsReachTheLineInRawMode)
{
    constexpr tcflag_t otherRate = 0010000; // the kernel's code for a rate given in numbers
    struct Case {
        const char* text;
        int16_t handshaking;
        tcflag_t rate;
        tcflag_t cflags; // of CSTOPB, CMSPAR, CRTSCTS: pseudo-terminals keep no data bits or parity
        tcflag_t iflags;
    };
    for (const Case& c :
         {Case{"9600,N,8,1", 0, B9600, 0, 0}, Case{"110,E,7,2", 1, B110, CSTOPB, IXON | IXOFF},
          Case{"1200,M,7,1", 2, B1200, CMSPAR | CRTSCTS, 0},
          Case{"230400,S,8,2", 3, B230400, CMSPAR | CSTOPB | CRTSCTS, IXON | IXOFF},
          Case{"31250,O,5,1.5", 0, otherRate, CSTOPB, 0}}) {
        SCOPED_TRACE(c.text);
        fc.mscComm.Handshaking(c.handshaking);
        fc.mscComm.Settings(c.text);
        ASSERT_EQ(errorOf([&] { fc.mscComm.PortOpen(true); }), 0);
        if (auto t = lineState()) {
            EXPECT_EQ(t->c_cflag & CBAUD, c.rate);
            EXPECT_EQ(t->c_cflag & (CSTOPB | CMSPAR | CRTSCTS), c.cflags);
            EXPECT_EQ(t->c_iflag & (IXON | IXOFF | ICRNL | ISTRIP | INPCK), c.iflags);
            EXPECT_EQ(t->c_lflag & (ICANON | ECHO | ISIG), 0u);
            EXPECT_EQ(t->c_oflag & OPOST, 0u);
        }
        fc.mscComm.PortOpen(false);
    }
}

TEST_F(OnAPort, ChangingSettingsOnAnOpenPortTakesEffect)
{
    fc.mscComm.Settings("9600,N,8,1");
    fc.mscComm.PortOpen(true);
    fc.mscComm.Settings("19200,N,8,2");
    fc.mscComm.Handshaking(2);
    if (auto t = lineState()) {
        EXPECT_EQ(t->c_cflag & CBAUD, static_cast<tcflag_t>(B19200));
        EXPECT_EQ(t->c_cflag & (CSTOPB | CRTSCTS), static_cast<tcflag_t>(CSTOPB | CRTSCTS));
    }
}

} // namespace
} // namespace zebreader81::test
