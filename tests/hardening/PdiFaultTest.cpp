// PDI faults on the line: each read fails with its report (a stall in the sheet data is
// ended by the cancel, which is that wait's only bound), and the reader reads the next sheet
// correctly after EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/pdi/PdiSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 14;
constexpr std::size_t statusLength = 3;
const std::string statusTitle = "Status Error";

// Column c of row r is marked when (r + 2c) % 5 == 0.
bool marked(int row, int col) { return (row + 2 * col) % 5 == 0; }

sim::Sheet grid(int rows)
{
    return sheetOf(rows, 12, [](int r, int c) { return marked(r, c) ? 9 : 0; });
}

struct PdiFaults : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::PdiSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    PdiFaults()
    {
        plugIn();
        reader.ReaderType(zebReaderTypePDIVMR138);
        reader.Port(port);
        reader.BaudRate(zebReaderBaudRate9600);
        reader.DataBits(zebReaderDataBits8);
        reader.TimeOut(1);
        reader.SleepTime(1);
        reader.RecognitionThreshold(240);
        reader.Advise(events);
    }

    void plugIn()
    {
        scanner = std::make_unique<sim::PdiSimulator>();
        sim::mapPort(port, scanner->path());
    }

    void start()
    {
        // The first "+" reads the value one below where the scanner stood.
        scanner->setThreshold(reader.RecognitionThreshold() + 1);
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

    void expectReport(int32_t kind, const std::string& title, const std::string& message,
                      const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, kind);
        EXPECT_EQ(r.title, title);
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.location, "basPeripheralDynamics." + procedure);
    }

    void expectRunTimeError(int32_t number, const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.kind, 0);
        EXPECT_EQ(r.number, number);
        EXPECT_EQ(r.location, "basPeripheralDynamics." + procedure);
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
        scanner->addSheet(grid(30));
        ASSERT_TRUE(reader.ReadPage());
        EXPECT_TRUE(errors.host->reports.empty());
        ASSERT_EQ(events->sheets, 1);
        const auto& m = events->side1.back();
        for (int r : {1, 2, 17, 30})
            for (int c = 1; c <= 12; ++c)
                EXPECT_EQ(m(r, c), marked(r, c) ? 241 : 0) << r << "," << c;
        EXPECT_EQ(m(31, 2), 0);
        EXPECT_EQ(reader.Side1TimingMarks(), 30);
        reader.EndReader();
    }
};

TEST_F(PdiFaults, HangUpInMidSheetIsAPortErrorOfTheRead)
{
    start();
    scanner->addSheet(grid(40));
    // The status, the LF and 40 whole rows (all there when the LF is read, so counted as 40).
    scanner->stallAfter(statusLength + 81);
    OnLine hangUp(*scanner, scanner->sent().size() + statusLength + 81, [s = scanner.get()] { s->hangUp(); });
    failingRead();
    expectRunTimeError(8020, "ReadPagePD");
    expectRecovery(true);
}

TEST_F(PdiFaults, GarbageInsteadOfAReply)
{
    // Noise for the status: its second character (1) reads as the back sensor.
    start();
    scanner->garble(statusLength, 1);
    failingRead();
    expectReport(2, statusTitle,
                 "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is "
                 "improperly closed.  Please clear any form from inside the scanner and try again.",
                 "CheckStatusPD");

    // Noise for the threshold.
    scanner->clearFaults();
    reader.CancelScan(false);
    reader.EndReader();
    errors.host->reports.clear();
    scanner->setThreshold(241);
    scanner->setThresholdAnswer("x?");
    EXPECT_FALSE(reader.StartReader());
    expectReport(
        2, "Threshold Initialization Error",
        "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.",
        "SetRecThresholdPD");
    expectRecovery();
}

TEST_F(PdiFaults, SilenceIsReportedOnTheStatusTimer)
{
    start();
    scanner->setSilent(true);
    failingRead();
    expectReport(
        2, statusTitle,
        "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and "
        "powered on.",
        "CheckStatusPD");
    expectRecovery();
}

TEST_F(PdiFaults, StatusReplyCutShortIsARunTimeErrorOfTheStatus)
{
    start();
    scanner->stallAfter(1);
    failingRead();
    expectRunTimeError(5, "CheckStatusPD");
    expectRecovery();
}

TEST_F(PdiFaults, RowsBeyondTheArrayEndInTheRunTimePath)
{
    start();
    scanner->addSheet(grid(520));
    failingRead();
    expectRunTimeError(9, "ReadPagePD");
    expectRecovery();
}

TEST_F(PdiFaults, ALineThatNeverFallsQuietDoesNotHoldTheReadForever)
{
    // A babbling scanner once kept the flush before the first command going for ever whenever
    // the driver read no faster than the scanner sent (seen under AddressSanitizer).
    start();
    scanner->babble("@");
    failingRead();
    EXPECT_FALSE(errors.host->reports.empty());
    scanner->babble("");
    expectRecovery();
}

TEST_F(PdiFaults, CancelWhileASheetStallsOrIsAwaited)
{
    start();
    scanner->addSheet(grid(40));
    scanner->stallAfter(statusLength + 41);
    {
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + 2);
        failingRead();
    }
    for (const auto& r : errors.host->reports)
        ADD_FAILURE() << r.location << ": " << r.description;

    scanner->clearFaults();
    reader.CancelScan(false);
    {
        // "Q" and "8", then nothing comes.
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + 2);
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty());
    expectRecovery();
}

} // namespace
} // namespace zebreader81::test
