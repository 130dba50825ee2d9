// The VMR138 driver end to end: clsZEBReader over a pseudo-terminal against the simulator.
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "sim/pdi/PdiSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <thread>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 9;

sim::Sheet sheet(std::vector<std::vector<int>> side1) { return {std::move(side1), {}, {}}; }

struct Pdi : ::testing::Test {
    HostScope errors;
    sim::PdiSimulator scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    Pdi()
    {
        sim::mapPort(port, scanner.path());
        reader.ReaderType(zebReaderTypePDIVMR138);
        reader.Port(port);
        reader.BaudRate(zebReaderBaudRate9600); // the model's line: 9600, N, 8, 1
        reader.DataBits(zebReaderDataBits8);
        reader.TimeOut(1);
        reader.SleepTime(1);
        reader.RecognitionThreshold(240);
        reader.Advise(events);
    }
    ~Pdi() override { EXPECT_EQ(scanner.complaints(), std::vector<std::string>{}); }

    // Starts against a scanner one step above the wanted threshold and forgets the traffic.
    void start()
    {
        scanner.setThreshold(reader.RecognitionThreshold() + 1);
        ASSERT_TRUE(reader.StartReader());
        scanner.clearReceived();
    }
    // Ends the reader and forgets the close's "9" once the scanner has it.
    void end()
    {
        const auto before = scanner.received().size();
        reader.EndReader();
        scanner.waitReceived(before + 1, 2s);
        scanner.clearReceived();
        errors.host->reports.clear();
    }
    void expectReport(const std::string& message, const std::string& title, const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.title, title);
        EXPECT_EQ(r.location, "basPeripheralDynamics." + procedure);
        EXPECT_EQ(r.kind, 2);
    }
};

TEST_F(Pdi, InitBringsTheThresholdToTheWantedValueFromEitherSide)
{
    // The first "+" reads the scanner's value (one below where it stood).
    const std::pair<int, std::string> cases[] = {
        {248, "0Q+" + std::string(7, '+')}, {200, "0Q+" + std::string(41, '-')}, {241, "0Q+"}};
    for (const auto& [from, sent] : cases) {
        scanner.setThreshold(from);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner.received(), sent);
        EXPECT_EQ(scanner.threshold(), 240);
        end();
    }
}

TEST_F(Pdi, InitAnswersStatusBitsWithDGAndE)
{
    scanner.setThreshold(241);
    scanner.setStatus(16 | 4, 8);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.received(), "0QDGE+");
    EXPECT_EQ(scanner.status1() | scanner.status2(), 0);
    end();
    scanner.setThreshold(241);
    scanner.setStatus(4, 0);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.received(), "0QG+");
}

TEST_F(Pdi, SensorAndJamStatusIsReportedAndTheFormEjected)
{
    const std::pair<int, std::string> cases[] = {
        {2 | 64, "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is "
                 "improperly closed. Please clear any form from the front of the scanner and try again."},
        {1, "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is "
            "improperly closed.  Please clear any form from inside the scanner and try again."},
        {64, "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry."},
    };
    for (const auto& [status, message] : cases) {
        SCOPED_TRACE(status);
        scanner.setStatus(status);
        reader.CancelScan(false);
        EXPECT_FALSE(reader.StartReader());
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(scanner.received(), "0Q4");
        expectReport(message, "Status Error", "CheckStatusPD");
        end();
    }
    EXPECT_EQ(scanner.ejects(), 3);
}

TEST_F(Pdi, SilentScannerGivesStatusErrorWhateverTheTimeOut)
{
    reader.TimeOut(600); // the status wait runs on its own 1000 ms
    scanner.setSilent(true);
    EXPECT_FALSE(reader.StartReader());
    expectReport(
        "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and "
        "powered on.",
        "Status Error", "CheckStatusPD");
    EXPECT_EQ(Reader::fComm(reader).tmrScan.Interval(), 1000) << "stays until the next StartReader";
}

TEST_F(Pdi, ThresholdFailuresAreReportedUnderTheirOwnTitle)
{
    scanner.setThresholdAnswer("G1");
    EXPECT_FALSE(reader.StartReader());
    expectReport(
        "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.",
        "Threshold Initialization Error", "SetRecThresholdPD");
    end();
    scanner.setThresholdAnswer(""); // no answer to "+"
    EXPECT_FALSE(reader.StartReader());
    expectReport("There was no response from the PDI scanner while initializing.",
                 "Threshold Initialization Error", "SetRecThresholdPD");
}

TEST_F(Pdi, SheetRowsAreFilledUpwardWithTheThresholdPlusOne)
{
    reader.RecognitionThreshold(200);
    start();
    // Columns 13 and 14 are beyond the read head; the empty middle row goes as two 64s.
    scanner.addSheet(sheet({{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 15, 9, 9},
                            {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                            {0, 0, 0, 0, 0, 3, 3, 0, 0, 0, 0, 0}}));
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner.received(), "Q89");
    EXPECT_EQ(reader.Side1TimingMarks(), 3);
    ASSERT_EQ(events->side1.size(), 1u);
    const auto& m = events->side1[0];
    EXPECT_EQ(m.UBound(1), 500);
    EXPECT_EQ(m.UBound(2), 14);
    int marked = 0;
    for (int r = 1; r <= 500; ++r)
        for (int c = 1; c <= 14; ++c)
            marked += m(r, c) != 0;
    EXPECT_EQ(marked, 4);
    EXPECT_EQ(m(1, 1) + m(1, 12) + m(3, 6) + m(3, 7), 4 * 201);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Pdi, RawStreamRoundsTheRowCountAndReadsOnPastAnInnerCR)
{
    start();
    std::thread feeder([this] {
        if (scanner.waitReceived(2, 5s)) // "Q8"
            // 13 as data (bits 1, 4, 8), an empty half, a lone first byte "A" (64 + 1), CR.
            scanner.inject(std::string{'\n', '\r', '@', 'A', '\r'});
    });
    const bool read = reader.ReadPage();
    feeder.join();
    ASSERT_TRUE(read);
    EXPECT_EQ(reader.Side1TimingMarks(), 2) << "four characters behind the LF: 1.5 rounds to 2";
    const auto m = reader.Side1Array();
    EXPECT_EQ(m(2, 1) + m(2, 3) + m(2, 4) + m(1, 1), 4 * 241);
    EXPECT_EQ(m(2, 2) + m(2, 7) + m(1, 7), 0);
    EXPECT_EQ(scanner.received(), "Q89");
}

TEST_F(Pdi, ReadUnderWaySendsNoReadCommand)
{
    start();
    scanner.addSheet(sheet({{0, 1}}));
    scanner.setReadUnderWay();
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner.received(), "Q9");
    EXPECT_EQ(reader.Side1Array()(1, 2), 241);
}

TEST_F(Pdi, CancelScanEndsTheWaitForASheetWithoutAMessage)
{
    start();
    std::thread canceller([this] {
        if (scanner.waitReceived(2, 5s))
            reader.CancelScan(true);
    });
    EXPECT_FALSE(reader.ReadPage());
    canceller.join();
    EXPECT_EQ(scanner.received(), "Q8");
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Pdi, RejectSendsThreeTheBatchEndEjectsWithFourAndCloseSendsNine)
{
    for (int i = 0; i < 3; ++i)
        scanner.addSheet(sheet({{1}}));
    events->onReadSheet = [this](int sheet, bool&) {
        if (sheet == 1)
            reader.RejectPage();
    };
    scanner.setThreshold(241);
    int32_t count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, 2, count));
    EXPECT_EQ(count, 2);
    scanner.waitReceived(14, 2s);
    EXPECT_EQ(scanner.received(), "0Q+"
                                  "Q893"
                                  "Q89"
                                  "4"
                                  "9");
    EXPECT_EQ(scanner.rejects(), 1);
    EXPECT_EQ(scanner.sheetsLeft(), 1u);

    start();
    EXPECT_FALSE(reader.EndReader()) << "the close has no result for this model";
    scanner.waitReceived(1, 2s);
    EXPECT_EQ(scanner.received(), "9");
    EXPECT_FALSE(Reader::fComm(reader).mscComm.PortOpen());
    EXPECT_TRUE(errors.host->reports.empty());
}

} // namespace
} // namespace zebreader81::test
