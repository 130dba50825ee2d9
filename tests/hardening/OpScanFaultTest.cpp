// OpScan faults on the line: each read fails with its report within the time-out, and the
// reader reads the next sheet correctly after EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/ncs/OpScanSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 11;
const std::string noResponse = "No Response";

sim::Sheet grid(int rows, int seed)
{
    auto s = sheetOf(rows, 48, [seed](int r, int c) { return ((r - 1) * 3 + (c - 1) + seed) % 16; });
    s.barcodes = {"42"};
    return s;
}

struct OpScanFaults : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::OpScanSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    OpScanFaults()
    {
        plugIn();
        reader.ReaderType(zebReaderTypeNCSOpScan2);
        reader.Port(port);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.Feeder(true);
        reader.Advise(events);
    }

    // A scanner on a fresh line (after a hang-up the old one is gone).
    void plugIn()
    {
        scanner = std::make_unique<sim::OpScanSimulator>();
        sim::mapPort(port, scanner->path());
    }

    void start()
    {
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(errors.host->reports.empty());
    }

    // One read under the fault: False, within the guard.
    void failingRead()
    {
        HangGuard guard(reader, *scanner);
        EXPECT_FALSE(reader.ReadPage());
        EXPECT_FALSE(guard.fired()) << "the read hung";
        EXPECT_TRUE(reader.CancelScan()) << "a failed read stops the batch";
    }

    void expectReport(int32_t kind, const std::string& title, const std::string& message)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, kind);
        EXPECT_EQ(r.title, title);
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.location, "basNCS.ReadPageNCS");
    }

    // EndReader and StartReader, then a good sheet reads whole.
    void expectRecovery(bool newLine = false)
    {
        reader.CancelScan(false);
        reader.EndReader();
        if (newLine)
            plugIn();
        errors.host->reports.clear();
        const auto before = events->sheets;
        scanner->addSheet(grid(30, 5));
        start();
        ASSERT_TRUE(reader.ReadPage());
        EXPECT_TRUE(errors.host->reports.empty());
        ASSERT_EQ(events->sheets, before + 1);
        const auto& side1 = events->side1.back();
        EXPECT_EQ(side1(1, 1), 5);
        EXPECT_EQ(side1(30, 47), (29 * 3 + 46 + 5) % 16);
        EXPECT_EQ(side1(31, 1), 0);
        EXPECT_EQ(events->barcodes.back()(1), "42");
        EXPECT_EQ(reader.Side1TimingMarks(), 30);
        EXPECT_TRUE(reader.EndReader());
    }
};

TEST_F(OpScanFaults, HangUpInMidPageIsAPortErrorOfTheRead)
{
    start();
    scanner->addSheet(grid(40, 1));
    scanner->stallNextSheetAfter(300);
    OnLine hangUp(*scanner, scanner->sent().size() + 300, [s = scanner.get()] { s->hangUp(); });
    failingRead();
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.number, 8020);
    EXPECT_EQ(r.location, "basNCS.ReadPageNCS");
    expectRecovery(true);
}

TEST_F(OpScanFaults, GarbageInsteadOfAPageIsAnInvalidRow)
{
    start();
    // Three stray values before the first row letter: the count is 51 where 48 belong.
    scanner->feedRawOnce(std::string("\x7f\xfe#a!!a\r", 8));
    failingRead();
    expectReport(2, "Invalid Number of Bytes",
                 "The scanner reported an invalid number of bytes on side 1\r\n\r\n"
                 "Invalid number of bytes: 51\r\nLine number: 0");
    expectRecovery();
}

TEST_F(OpScanFaults, StallsPastTheTimeOutReportNoResponse)
{
    start();
    // Nothing at all after DC1.
    failingRead();
    expectReport(2, noResponse, "There was no response from the scanner while scanning a page.");

    // A page that stops in the middle.
    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->addSheet(grid(20, 2));
    scanner->stallNextSheetAfter(100);
    failingRead();
    expectReport(2, noResponse, "There was no response from the scanner while reading data.");
    expectRecovery();
}

TEST_F(OpScanFaults, StatusReplyCutShortIsNoResponseOfTheStatusCheck)
{
    start();
    const auto sheet = grid(10, 3);
    scanner->addSheet(sheet);
    scanner->stallAfter(sim::OpScanSimulator::encodeSheet(sheet).size() + 3);
    failingRead();
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, 2);
    EXPECT_EQ(r.title, noResponse);
    EXPECT_EQ(r.description, "There was no response from the scanner while checking status.");
    EXPECT_EQ(r.location, "basNCS.CheckStatusNCS");
    EXPECT_EQ(events->sheets, 0);
    scanner->clearFaults();
    expectRecovery();
}

TEST_F(OpScanFaults, RowsBeyondTheArrayEndInTheRunTimePath)
{
    start();
    scanner->addSheet(grid(170, 4));
    failingRead();
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.number, 9);
    EXPECT_EQ(r.location, "basNCS.ReadPageNCS");
    EXPECT_EQ(events->sheets, 0);
    expectRecovery();
}

TEST_F(OpScanFaults, ALineThatNeverFallsQuietDoesNotHoldTheReadForever)
{
    // A babbling scanner once kept the drain before the first command going for ever whenever
    // the driver read no faster than the scanner sent (seen under AddressSanitizer).
    start();
    scanner->babble("5");
    failingRead();
    EXPECT_FALSE(errors.host->reports.empty());
    scanner->babble("");
    expectRecovery();
}

TEST_F(OpScanFaults, CancelWhileWaitingForAHandFedSheetIsSilent)
{
    reader.Feeder(false);
    start();
    {
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + 1);
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty());
    reader.Feeder(true);
    expectRecovery();
}

} // namespace
} // namespace zebreader81::test
