// ScanMark faults on the line: each read fails with its report (or, where the scanner's
// answer calls for none, silently), and the reader reads the next sheet correctly after
// EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 13;
constexpr std::size_t statusLength = 12;
const std::string noAnswer = "There was no response from the Scantron scanner. Could not initialize!";

int strength(int row, int col, int seed) { return (row + 2 * col + seed) % 13; }

sim::Sheet grid(int seed)
{
    return sheetOf(10, 20, [seed](int r, int c) { return strength(r, c, seed); });
}

SafeArray<int16_t> perSheet(int16_t value)
{
    auto a = SafeArray<int16_t>::vector(0, 1);
    a(1) = value;
    return a;
}

struct ScanMarkFaults : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::ScanMarkSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    ScanMarkFaults()
    {
        plugIn();
        reader.ReaderType(zebReaderTypeScantronScanMark2000);
        reader.Port(port);
        reader.DataBits(zebReaderDataBits8);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.Feeder(true);
        reader.RecognitionMode(zebRecognitionTypePage);
        reader.Side1Rows(perSheet(10));
        reader.Side1Cols(perSheet(20));
        reader.Side2Rows(perSheet(0));
        reader.Side2Cols(perSheet(0));
        reader.Advise(events);
    }

    void plugIn()
    {
        scanner = std::make_unique<sim::ScanMarkSimulator>(zebReaderTypeScantronScanMark2000);
        sim::mapPort(port, scanner->path());
    }

    void start()
    {
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(errors.host->reports.empty());
    }

    bool guardedRead()
    {
        HangGuard guard(reader, *scanner);
        const bool ok = reader.ReadPage();
        EXPECT_FALSE(guard.fired()) << "the read hung";
        return ok;
    }

    void failingRead()
    {
        EXPECT_FALSE(guardedRead());
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(events->sheets, 0);
    }

    void expectReport(int32_t kind, const std::string& title, const std::string& message,
                      const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, kind);
        EXPECT_EQ(r.title, title);
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.location, "basScantron." + procedure);
    }

    void expectSheet(int seed)
    {
        const auto& side1 = events->side1.back();
        EXPECT_EQ(side1(1, 1), strength(1, 1, seed));
        EXPECT_EQ(side1(10, 20), strength(10, 20, seed));
        EXPECT_EQ(side1(4, 7), strength(4, 7, seed));
    }

    void expectRecovery(bool newLine = false)
    {
        scanner->clearFaults();
        reader.CancelScan(false);
        reader.EndReader();
        if (newLine)
            plugIn();
        errors.host->reports.clear();
        start();
        const auto before = events->sheets;
        scanner->addSheet(grid(3));
        ASSERT_TRUE(guardedRead());
        EXPECT_TRUE(errors.host->reports.empty());
        ASSERT_EQ(events->sheets, before + 1);
        expectSheet(3);
        EXPECT_TRUE(reader.EndReader());
    }
};

TEST_F(ScanMarkFaults, HangUpInMidTransferIsAPortErrorOfTheRead)
{
    start();
    scanner->addSheet(grid(1));
    scanner->stallAfter(statusLength + 100);
    OnLine hangUp(*scanner, scanner->sent().size() + statusLength + 100,
                  [s = scanner.get()] { s->hangUp(); });
    failingRead();
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.number, 8020);
    EXPECT_EQ(r.location, "basScantron.ReadPageST");
    expectRecovery(true);
}

TEST_F(ScanMarkFaults, GarbageInsteadOfAReply)
{
    // Noise for a status answer: a state character that means nothing fails without a message.
    start();
    scanner->garble(statusLength, 1);
    failingRead();
    EXPECT_TRUE(errors.host->reports.empty());

    // Noise for the answer to the reset. (A close with CancelScan still set would not wait
    // for its own answer.)
    reader.CancelScan(false);
    reader.EndReader();
    scanner->garble(1, 1);
    EXPECT_FALSE(reader.StartReader());
    ASSERT_FALSE(errors.host->reports.empty());
    const auto& r = errors.host->reports.front();
    EXPECT_EQ(r.title, "Reset Error");
    EXPECT_EQ(r.description, "An error occurred trying to reset the Scantron scanner.  Please power the "
                             "scanner off and on and retry the operation.");
    EXPECT_EQ(r.location, "basScantron.ResetReaderST");
    expectRecovery();
}

TEST_F(ScanMarkFaults, StallsPastTheTimeOut)
{
    start();
    scanner->addSheet(grid(1));
    scanner->stallAfter(statusLength + 100);
    failingRead();
    expectReport(2, "Read Error",
                 "There was no response from the Scantron scanner. The scanner timed out waiting to receive "
                 "the scanned data.",
                 "ReadPageST");

    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->setSilent(true);
    failingRead();
    expectReport(2, "Initialize Error", noAnswer, "CheckStatusST");
    expectRecovery();
}

TEST_F(ScanMarkFaults, StatusReplyCutShortEndsOnTheTimer)
{
    start();
    scanner->stallAfter(statusLength - 1);
    failingRead();
    expectReport(2, "Initialize Error", noAnswer, "CheckStatusST");
    expectRecovery();
}

TEST_F(ScanMarkFaults, BytesBeyondTheFormAreDroppedAndTheSheetStillReads)
{
    // Forty rows more than the form holds come between the marks and the CR: the rows the form
    // holds are kept, the rest is thrown away.
    start();
    scanner->addSheet(grid(2));
    // The flood starts with the last character of the last row (a column the form lacks), so
    // the driver is still inside the side when it comes.
    const std::size_t marks = statusLength + 10 * 48 - 1;
    scanner->stallAfter(marks);
    {
        OnLine flood(*scanner, scanner->sent().size() + marks, [s = scanner.get()] {
            s->inject(std::string(40 * 48 + 1, '7') + "\r");
            s->clearFaults();
        });
        EXPECT_TRUE(guardedRead());
    }
    EXPECT_TRUE(errors.host->reports.empty());
    ASSERT_EQ(events->sheets, 1);
    expectSheet(2);
    events->sheets = 0;
    expectRecovery();
}

TEST_F(ScanMarkFaults, CancelDuringEachWait)
{
    // Hand feeding: status polls until a sheet comes.
    reader.Feeder(false);
    start();
    {
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + 1);
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty());

    // The first byte of the mark data.
    reader.Feeder(true);
    reader.CancelScan(false);
    scanner->addSheet(grid(1));
    scanner->stallAfter(statusLength);
    {
        // The status query (6 bytes) and the read command (10).
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + 16);
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty());
    expectRecovery();
}

} // namespace
} // namespace zebreader81::test
