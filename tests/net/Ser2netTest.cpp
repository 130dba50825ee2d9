// A reader on a real network serial server (ser2net on a loopback port in front of a
// simulator, with the COM port option of RFC 2217): the reader's rate reaches the scanner's
// line, and a server killed in the middle of a sheet is a port error.
#include "sim/Ser2net.h"
#include "channel/ChannelPeers.h"
#include "sim/ncs/OpScanSimulator.h"
#include "support/SimulatedReader.h"
#include "support/TestHost.h"

#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace zebreader81::test {
namespace {

using Mode = sim::Ser2net::Mode;

constexpr int16_t port = 6;

// Starts ser2net before `path`, or skips the test where it is not installed.
#define START_SER2NET(server, path, mode)                                                                    \
    if (sim::Ser2net::program().empty())                                                                     \
        GTEST_SKIP() << "ser2net is not installed (scripts/setup installs it)";                              \
    sim::Ser2net server(path, mode);                                                                         \
    ASSERT_TRUE(server.running()) << server.log()

TEST(Ser2net, KilledInTheMiddleOfASheetIsAPortErrorNamingTheServer)
{
    PortMap ports;
    HostScope errors;
    sim::OpScanSimulator scanner;
    START_SER2NET(server, scanner.path(), Mode::Rfc2217);
    ports.map(port, server.url());
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeNCSOpScan2);
    reader.Port(port);
    reader.TimeOut(10);
    reader.SleepTime(2);
    reader.Feeder(true);
    reader.BaudRate(zebReaderBaudRate19200);
    ASSERT_TRUE(reader.StartReader());
    // The rate went through the server to the scanner's line (a pseudo-terminal always keeps 8
    // data bits without parity).
    termios t{};
    const int fd = open(scanner.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(tcgetattr(fd, &t), 0);
    close(fd);
    EXPECT_EQ(cfgetospeed(&t), B19200);

    scanner.addSheet(patternSheet(40, 48));
    scanner.stallNextSheetAfter(300);
    {
        // The page stops after 300 bytes; the server dies while the reader waits for the rest.
        // Should the read outlast every time-out by far, the scan is cancelled and the line hung up.
        using namespace std::chrono_literals;
        const auto total = scanner.sent().size() + 300;
        const auto limit = std::chrono::steady_clock::now() + 20s;
        std::atomic<bool> over{false}, hung{false};
        std::thread watch([&] {
            auto until = [&](auto done) {
                while (!over && !done() && std::chrono::steady_clock::now() < limit)
                    std::this_thread::sleep_for(2ms);
                return !over;
            };
            if (until([&] { return scanner.sent().size() >= total; }))
                std::this_thread::sleep_for(50ms), server.kill();
            if (until([] { return false; }))
                hung = true, reader.CancelScan(true), scanner.hangUp();
        });
        EXPECT_FALSE(reader.ReadPage());
        over = true;
        watch.join();
        EXPECT_FALSE(hung) << "the read hung";
    }
    const auto& r = errors.host->only();
    EXPECT_EQ(r.number, 8020);
    EXPECT_EQ(r.location, "basNCS.ReadPageNCS");
    EXPECT_NE(r.description.find(server.url()), std::string::npos) << r.description;
    EXPECT_NE(r.description.find("closed the connection"), std::string::npos) << r.description;
    reader.EndReader();

    // With the server gone the port cannot be opened: the address and the reason are named.
    errors.host->reports.clear();
    reader.CancelScan(false);
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(errors.host->only().number, 8002);
    EXPECT_NE(errors.host->only().description.find(server.url() + ": Connection refused"), std::string::npos)
        << errors.host->only().description;
}

} // namespace
} // namespace zebreader81::test
