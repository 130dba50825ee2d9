// The Windows build against a Linux simulator program on a pseudo-terminal that Wine maps to
// COM<ZEBREADER_TEST_PORT> (with-simulator sets both up), an EZData. What the COM tests do not
// reach on such a port: the probe and firmware query, and the serial control's errors and waits.
#include "channel/frmComm.h"
#include "core/basError.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

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

struct Reading : ::testing::Test {
    const char* mapped = std::getenv("ZEBREADER_TEST_PORT");
    const int port = mapped ? std::atoi(mapped) : 0;
    void SetUp() override
    {
        if (port == 0)
            GTEST_SKIP() << "needs the EZData simulator: run through with-simulator";
    }
};

TEST_F(Reading, TheEZDataProbeAndFirmwareQueryFindTheScanner)
{
    HostScope errors;
    clsZEBReader reader;
    ASSERT_TRUE(reader.LoadDefaults(zebReaderTypeNCSEZData));
    EXPECT_TRUE(reader.Locate(static_cast<int16_t>(port)));
    EXPECT_EQ(reader.Port(), port);
    // The table offers no firmware query for this model; the simulator answers one.
    reader.Profiles()->Item("23")->FirmwareEnabled(true);
    std::string firmware;
    EXPECT_TRUE(reader.Firmware(firmware));
    EXPECT_FALSE(firmware.empty());
    for (const auto& r : errors.host->reports)
        ADD_FAILURE() << r.number << " " << r.description << " at " << r.location;
}

TEST_F(Reading, TheSerialControlRaisesItsErrorsAndItsWaitsBlockUntilWakeOrTimer)
{
    frmComm fc;
    auto& com = fc.mscComm;
    com.CommPort(99); // no such device in the prefix
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);

    com.CommPort(static_cast<int16_t>(port));
    com.PortOpen(true);
    // A rate the line cannot run, and data bits it cannot carry; the settings stay.
    EXPECT_EQ(errorOf([&] { com.Settings("12345,N,8,1"); }), err::CommStateNotSet);
    EXPECT_EQ(errorOf([&] { com.Settings("9600,N,4,1"); }), err::CommStateNotSet);
    EXPECT_EQ(com.Settings(), "9600,N,8,1");
    // Framing a pseudo-terminal cannot hold, asked for again: the second time nothing changes.
    for (const char* settings : {"9600,E,7,1", "9600,E,7,1", "38400,O,7,2", "38400,O,7,2"})
        EXPECT_EQ(errorOf([&] { com.Settings(settings); }), 0) << settings;
    for (int16_t handshaking = 3; handshaking >= 0; --handshaking)
        EXPECT_EQ(errorOf([&] { com.Handshaking(handshaking); }), 0) << handshaking;

    // Nothing was asked, so the line stays quiet: only the timer ends this wait.
    fc.tmrScan.Interval(300);
    fc.tmrScan.Enabled(true);
    int turns = 0;
    while (com.InBufferCount() == 0 && fc.tmrScan.Enabled()) {
        fc.DoEvents();
        ++turns;
    }
    EXPECT_FALSE(fc.tmrScan.Enabled());
    EXPECT_LT(turns, 10) << "a wait must block, not spin";
    // A wake from another thread ends a wait that has no limit.
    std::thread waker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        fc.Wake();
    });
    fc.DoEvents();
    waker.join();
    EXPECT_EQ(com.InBufferCount(), 0);
    com.PortOpen(false);
}

} // namespace
} // namespace zebreader81::test
