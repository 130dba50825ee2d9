// EZData faults on the line: each read fails with its report, and the reader reads the next
// sheet correctly after EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 12;
const std::string title = "EZData Scanner Error";
const std::string enable = std::string("\x12\x1b") + "E" + "\x12" + "E";

// Column c of row r is marked when (r + c) % 3 == 0.
bool marked(int row, int col) { return (row + col) % 3 == 0; }

sim::Sheet grid(int rows)
{
    return sheetOf(rows, 12, [](int r, int c) { return marked(r, c) ? 9 : 0; });
}

struct EZDataFaults : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::EZDataSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    EZDataFaults()
    {
        plugIn();
        reader.ReaderType(zebReaderTypeNCSEZData);
        reader.Port(port);
        reader.BaudRate(zebReaderBaudRate9600);
        reader.Parity("N");
        reader.DataBits(zebReaderDataBits8);
        reader.StopBits(1);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.RecognitionThreshold(5);
        reader.Advise(events);
    }

    void plugIn()
    {
        scanner = std::make_unique<sim::EZDataSimulator>();
        sim::mapPort(port, scanner->path());
        scanner->setThresholdCode("70");
        // The driver looks for the enable answer 500 ms after the enable; the sheet follows.
        scanner->setFeedDelay(700ms);
    }

    void start()
    {
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(errors.host->reports.empty());
    }

    void failingRead()
    {
        HangGuard guard(reader, *scanner);
        EXPECT_FALSE(reader.ReadPage());
        EXPECT_FALSE(guard.fired()) << "the read hung";
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(events->sheets, 0);
    }

    void expectReport(const std::string& message)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, 2);
        EXPECT_EQ(r.title, title);
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.location, "basNCSEZData.ReadPageNCSEZ");
    }

    void expectRunTimeError(int32_t number)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, 0);
        EXPECT_EQ(r.number, number);
        EXPECT_EQ(r.location, "basNCSEZData.ReadPageNCSEZ");
    }

    void expectRecovery(bool newLine = false)
    {
        scanner->clearFaults();
        scanner->clearOverrides();
        reader.CancelScan(false);
        reader.EndReader();
        if (newLine)
            plugIn();
        errors.host->reports.clear();
        start();
        scanner->addSheet(grid(25));
        ASSERT_TRUE(reader.ReadPage());
        EXPECT_TRUE(errors.host->reports.empty());
        ASSERT_EQ(events->sheets, 1);
        const auto& side1 = events->side1.back();
        for (int r : {1, 2, 13, 25})
            for (int c = 1; c <= 12; ++c)
                EXPECT_EQ(side1(r, c), marked(r, c) ? 6 : 0) << r << "," << c;
        EXPECT_EQ(side1(26, 2), 0);
        EXPECT_EQ(reader.Side1TimingMarks(), 25);
        EXPECT_TRUE(reader.EndReader());
    }
};

TEST_F(EZDataFaults, HangUpInMidSheetIsAPortErrorOfTheRead)
{
    start();
    scanner->addSheet(grid(40));
    // The enable answer and ten bytes of the sheet, then the line goes.
    scanner->stallAfter(2 + 10);
    OnLine hangUp(*scanner, scanner->sent().size() + 12, [s = scanner.get()] { s->hangUp(); });
    failingRead();
    expectRunTimeError(8020);
    expectRecovery(true);
}

TEST_F(EZDataFaults, GarbageInsteadOfTheEnableAnswerOrInTheSheet)
{
    start();
    scanner->overrideAnswer("E", "x#");
    failingRead();
    expectReport("EZData Scanner - Unexpected data returned from scanner (ENABLE1).");

    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->overrideAnswer("E", "G\r");
    {
        OnLine noise(
            *scanner, scanner->sent().size() + 2, [this] { scanner->inject("\x21\x60\x85"); }, 700ms);
        failingRead();
    }
    expectReport("EZData Scanner - Unexpected data returned from scanner (ENABLE2): \x21\x60\x85");
    expectRecovery();
}

TEST_F(EZDataFaults, SilenceAndAnAnswerCutShortFailTheEnable)
{
    start();
    scanner->setSilent(true);
    failingRead();
    expectReport("EZData Scanner - Unexpected data returned from scanner (ENABLE1).");

    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->setSilent(false);
    scanner->overrideAnswer("E", "G");
    failingRead();
    expectReport("EZData Scanner - Unexpected data returned from scanner (ENABLE1).");
    expectRecovery();
}

TEST_F(EZDataFaults, RowsBeyondTheArrayEndInTheRunTimePath)
{
    start();
    scanner->addSheet(grid(160));
    failingRead();
    expectRunTimeError(9);
    expectRecovery();
}

TEST_F(EZDataFaults, CancelWhileTheSheetIsAwaitedIsSilent)
{
    start();
    {
        // No sheet comes: only the cancel ends the wait.
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + enable.size());
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty());
    expectRecovery();
}

} // namespace
} // namespace zebreader81::test
