// Readers on a real network serial server (ser2net on a loopback port in front of a
// simulator): the sample sheets through the COM port option (RFC 2217), and a server killed in
// the middle of a sheet. The raw server is read by zebreader scan (tests/tools); each family's
// reads by its simulated scans.
#include "sim/Ser2net.h"
#include "channel/ChannelPeers.h"
#include "sim/SheetFile.h"
#include "sim/Simulators.h"
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

SafeArray<int16_t> perSheet(std::size_t v)
{
    auto a = SafeArray<int16_t>::vector(0, 1);
    a(1) = static_cast<int16_t>(v);
    return a;
}

TEST(Ser2net, Rfc2217SetsTheScannersLineAndCarriesTheSampleSheetsMarkForMark)
{
    constexpr int model = zebReaderTypeScantronScanMark4000;
    PortMap ports;
    HostScope errors;
    const auto samples = sim::sampleSheets(model);
    auto scanner = sim::makeSimulator(model, samples);
    START_SER2NET(server, scanner->path(), Mode::Rfc2217);
    ports.map(port, server.url());

    clsZEBReader reader;
    auto events = std::make_shared<RecordingEvents>();
    reader.ReaderType(static_cast<zebReaderType>(model));
    reader.Port(port);
    reader.SleepTime(1);
    reader.TimeOut(2);
    reader.Advise(events);
    // The form the sample sheets are printed on, as zebreader scan sets it up.
    const auto size = sim::measureSheets(samples);
    reader.Side1Rows(perSheet(size.rows1));
    reader.Side1Cols(perSheet(size.cols1));
    reader.Side2Rows(perSheet(size.rows2));
    reader.Side2Cols(perSheet(size.cols2));
    reader.Barcode(size.barcodes);
    ASSERT_TRUE(reader.StartReader()) << errors.host->reports.at(0).description;

    // The reader's rate reached the scanner's line through the server (a pseudo-terminal always
    // keeps 8 data bits without parity).
    termios t{};
    const int fd = open(scanner->path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(tcgetattr(fd, &t), 0);
    close(fd);
    EXPECT_EQ(cfgetospeed(&t), reader.BaudRate() == 9600    ? B9600
                               : reader.BaudRate() == 19200 ? B19200
                                                            : B38400);

    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_TRUE(reader.ReadPage()) << "sheet " << i + 1 << ": " << errors.host->reports.at(0).description;
        ASSERT_EQ(events->side1.size(), i + 1);
        int marks = 0;
        for (std::size_t row = 0; row < samples[i].side1.size(); ++row)
            for (std::size_t col = 0; col < samples[i].side1[row].size(); ++col) {
                const bool marked = samples[i].side1[row][col] > 0;
                ASSERT_EQ(events->side1[i](static_cast<int32_t>(row + 1), static_cast<int32_t>(col + 1)) > 0,
                          marked)
                    << "sheet " << i + 1 << " row " << row + 1 << " column " << col + 1;
                marks += marked;
            }
        EXPECT_GT(marks, 50);
    }
    EXPECT_TRUE(reader.EndReader());
    for (const auto& r : errors.host->reports)
        ADD_FAILURE() << r.location << ": " << r.description;
}

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
    ASSERT_TRUE(reader.StartReader());

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
