// Readers on a real network serial server: ser2net on a loopback port in front of each
// family's simulator, raw and with RFC 2217, and a server killed in the middle of a sheet.
#include "sim/Ser2net.h"
#include "channel/ChannelPeers.h"
#include "hardening/FaultSupport.h"
#include "sim/SheetFile.h"
#include "sim/Simulators.h"
#include "sim/ncs/OpScanSimulator.h"
#include "support/TestHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

namespace zebreader81::test {
namespace {

using Mode = sim::Ser2net::Mode;

constexpr int16_t port = 6;

std::string modeName(Mode mode) { return mode == Mode::Raw ? "Raw" : "Rfc2217"; }

// Starts ser2net before `path`, or skips the test where it is not installed.
#define START_SER2NET(server, path, mode)                                                                    \
    if (sim::Ser2net::program().empty())                                                                     \
        GTEST_SKIP() << "ser2net is not installed (scripts/setup installs it)";                              \
    sim::Ser2net server(path, mode);                                                                         \
    ASSERT_TRUE(server.running()) << server.log()

// The line settings the server put on the scanner's side of the pseudo-terminal.
termios lineOf(const std::string& path)
{
    termios t{};
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(tcgetattr(fd, &t), 0);
    close(fd);
    return t;
}

// The form the sample sheets are printed on, as zebreader scan sets it up.
void formFor(clsZEBReader& reader, const std::vector<sim::Sheet>& sheets)
{
    const auto size = sim::measureSheets(sheets);
    auto one = [](std::size_t v) {
        auto a = SafeArray<int16_t>::vector(0, 1);
        a(1) = static_cast<int16_t>(v);
        return a;
    };
    reader.Side1Rows(one(size.rows1));
    reader.Side1Cols(one(size.cols1));
    reader.Side2Rows(one(size.rows2));
    reader.Side2Cols(one(size.cols2));
    if (size.rows2 > 0) {
        reader.Duplex(true);
        reader.DuplexForm(true);
    }
    reader.Barcode(size.barcodes);
}

struct Ser2netBatch : ::testing::TestWithParam<std::tuple<int, Mode>> {};

std::string batchName(const ::testing::TestParamInfo<std::tuple<int, Mode>>& p)
{
    return "Model" + std::to_string(std::get<0>(p.param)) + "_" + modeName(std::get<1>(p.param));
}

std::string modeOf(const ::testing::TestParamInfo<Mode>& p) { return modeName(p.param); }

TEST_P(Ser2netBatch, ReadsTheSampleSheetsMarkForMark)
{
    const auto [model, mode] = GetParam();
    PortMap ports;
    HostScope errors;
    const auto samples = sim::sampleSheets(model);
    auto scanner = sim::makeSimulator(model, samples);
    ASSERT_TRUE(scanner);
    START_SER2NET(server, scanner->path(), mode);
    ports.map(port, server.url());

    clsZEBReader reader;
    auto events = std::make_shared<RecordingEvents>();
    reader.ReaderType(static_cast<zebReaderType>(model));
    reader.Port(port);
    // PDI counts a sheet's rows by the bytes waiting SleepTime x 5 after its LF, so the pause
    // must cover the server's hop as it covers a slow line.
    const bool pdi = model == zebReaderTypePDIVMR138;
    reader.SleepTime(pdi ? 20 : 1);
    reader.TimeOut(2);
    reader.Advise(events);
    formFor(reader, samples);
    ASSERT_TRUE(reader.StartReader())
        << (errors.host->reports.empty() ? "" : errors.host->reports[0].description);
    if (mode == Mode::Rfc2217) {
        // The reader's rate reached the scanner's line through the server (a pseudo-terminal
        // always keeps 8 data bits without parity).
        const auto t = lineOf(scanner->path());
        EXPECT_EQ(cfgetospeed(&t), reader.BaudRate() == 9600    ? B9600
                                   : reader.BaudRate() == 19200 ? B19200
                                                                : B38400);
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_TRUE(reader.ReadPage())
            << "sheet " << i + 1 << ": "
            << (errors.host->reports.empty() ? "" : errors.host->reports[0].description);
        ASSERT_EQ(events->side1.size(), i + 1);
        const auto& side1 = events->side1[i];
        int marks = 0;
        for (std::size_t row = 0; row < samples[i].side1.size(); ++row)
            for (std::size_t col = 0; col < samples[i].side1[row].size(); ++col) {
                const bool marked = samples[i].side1[row][col] > 0;
                ASSERT_EQ(side1(static_cast<int32_t>(row + 1), static_cast<int32_t>(col + 1)) > 0, marked)
                    << "sheet " << i + 1 << " row " << row + 1 << " column " << col + 1;
                marks += marked;
            }
        EXPECT_GT(marks, 50);
    }
    // The PDI close has no result.
    EXPECT_EQ(reader.EndReader(), !pdi);
    for (const auto& r : errors.host->reports)
        ADD_FAILURE() << r.location << ": " << r.description;
}

// OpScan, ScanMark, PDI and EZData, through a raw and a telnet server.
INSTANTIATE_TEST_SUITE_P(Families, Ser2netBatch,
                         ::testing::Combine(::testing::Values(2, 14, 24, 23),
                                            ::testing::Values(Mode::Raw, Mode::Rfc2217)),
                         batchName);

struct Ser2netKilled : ::testing::TestWithParam<Mode> {};

TEST_P(Ser2netKilled, InTheMiddleOfASheetIsAPortErrorNamingTheServer)
{
    PortMap ports;
    HostScope errors;
    sim::OpScanSimulator scanner;
    START_SER2NET(server, scanner.path(), GetParam());
    ports.map(port, server.url());
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeNCSOpScan2);
    reader.Port(port);
    reader.TimeOut(10);
    reader.SleepTime(2);
    reader.Feeder(true);
    ASSERT_TRUE(reader.StartReader());

    scanner.addSheet(sheetOf(40, 48, [](int r, int c) { return (r + c) % 16; }));
    scanner.stallNextSheetAfter(300);
    {
        // The page stops after 300 bytes; the server dies while the reader waits for the rest.
        OnLine kill(scanner, scanner.sent().size() + 300, [&server] { server.kill(); });
        HangGuard guard(reader, scanner);
        EXPECT_FALSE(reader.ReadPage());
        EXPECT_FALSE(guard.fired()) << "the read hung";
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

INSTANTIATE_TEST_SUITE_P(Modes, Ser2netKilled, ::testing::Values(Mode::Raw, Mode::Rfc2217), modeOf);

} // namespace
} // namespace zebreader81::test
