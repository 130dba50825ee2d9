// The VMR138 driver end to end: clsZEBReader over a pseudo-terminal against the simulator.
#include "channel/frmComm.h"
#include "engine/ReaderAccess.h"
#include "sim/pdi/PdiSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <thread>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 9;
constexpr const char* statusLocation = "basPeripheralDynamics.CheckStatusPD";
constexpr const char* thresholdLocation = "basPeripheralDynamics.SetRecThresholdPD";

sim::Sheet sheetOf(std::vector<std::vector<int>> side1) { return sim::Sheet{std::move(side1), {}, {}}; }

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
        reader.Parity("N");
        reader.StopBits(1.0f);
        reader.TimeOut(1);
        reader.SleepTime(1);
        reader.RecognitionThreshold(240);
        reader.Advise(events);
    }
    ~Pdi() override { EXPECT_EQ(scanner.complaints(), std::vector<std::string>{}); }

    // Starts the reader against a scanner already at the wanted threshold, then forgets the
    // init traffic.
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
    }
};

TEST_F(Pdi, InitStepsTheThresholdDownFromAbove)
{
    scanner.setThreshold(248);
    ASSERT_TRUE(reader.StartReader());
    // The first "+" reads 247; seven more bring it to 240.
    EXPECT_EQ(scanner.received(), "0Q" + std::string(8, '+'));
    EXPECT_EQ(scanner.threshold(), 240);
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_EQ(Reader::fComm(reader).tmrScan.Interval(), 1000) << "replaces TimeOut's interval";
}

TEST_F(Pdi, InitStepsTheThresholdUpFromBelowAndLeavesAnEqualOneAlone)
{
    scanner.setThreshold(200);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.received(), "0Q+" + std::string(41, '-'));
    EXPECT_EQ(scanner.threshold(), 240);
    end();
    scanner.setThreshold(241);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.received(), "0Q+");
    EXPECT_EQ(scanner.threshold(), 240);
}

TEST_F(Pdi, InitAnswersStatusBitsWithDGAndE)
{
    scanner.setThreshold(241);
    scanner.setStatus(16 | 4, 8);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.received(), "0QDGE+");
    EXPECT_EQ(scanner.status1(), 0);
    EXPECT_EQ(scanner.status2(), 0);

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
        errors.host->reports.clear();
        scanner.setStatus(status);
        reader.CancelScan(false);
        EXPECT_FALSE(reader.StartReader());
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(scanner.received(), "0Q4");
        const auto& r = errors.host->only();
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.title, "Status Error");
        EXPECT_EQ(r.location, statusLocation);
        EXPECT_EQ(r.kind, 2);
        end();
    }
    EXPECT_EQ(scanner.ejects(), 3);
}

TEST_F(Pdi, SilentScannerGivesStatusErrorWithinTheFixedInterval)
{
    reader.TimeOut(600); // the status wait must not take this
    scanner.setSilent(true);
    EXPECT_FALSE(reader.StartReader());
    const auto& r = errors.host->only();
    EXPECT_EQ(r.description, "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is "
                             "connected and powered on.");
    EXPECT_EQ(r.title, "Status Error");
    EXPECT_EQ(r.location, statusLocation);
    EXPECT_EQ(scanner.received(), "0Q");
}

TEST_F(Pdi, ThresholdFailuresAreReportedUnderTheirOwnTitle)
{
    scanner.setThresholdAnswer("G1");
    EXPECT_FALSE(reader.StartReader());
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(
            r.description,
            "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.");
        EXPECT_EQ(r.title, "Threshold Initialization Error");
        EXPECT_EQ(r.location, thresholdLocation);
    }
    end();

    errors.host->reports.clear();
    scanner.setThresholdAnswer(""); // no answer to "+"
    EXPECT_FALSE(reader.StartReader());
    const auto& r = errors.host->only();
    EXPECT_EQ(r.description, "There was no response from the PDI scanner while initializing.");
    EXPECT_EQ(r.title, "Threshold Initialization Error");
    EXPECT_EQ(r.location, thresholdLocation);
}

TEST_F(Pdi, SheetRowsAreFilledUpwardWithTheThresholdPlusOne)
{
    reader.RecognitionThreshold(200);
    start();
    //                  columns 1 .. 12 (13 and 14 are beyond the read head)
    scanner.addSheet(sheetOf({{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 15, 9, 9},
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
    EXPECT_EQ(m(1, 1), 201);
    EXPECT_EQ(m(1, 12), 201);
    EXPECT_EQ(m(3, 6), 201);
    EXPECT_EQ(m(3, 7), 201);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Pdi, RawStreamHalvesRowCountAndCarriesOnPastAnInnerCR)
{
    start();
    std::thread feeder([this] {
        if (scanner.waitReceived(2, 5s))
            // LF, then 13 (bits 1, 4, 8) and an empty half-row, a lone first byte, then CR.
            scanner.inject(std::string{'\n', '\r', '@', 'A', '\r'});
    });
    const bool read = reader.ReadPage();
    feeder.join();
    ASSERT_TRUE(read);
    // Four characters waited behind the LF: (4 - 1) / 2 = 1.5 rounds to 2.
    EXPECT_EQ(reader.Side1TimingMarks(), 2);
    const auto m = reader.Side1Array();
    EXPECT_EQ(m(2, 1), 241);
    EXPECT_EQ(m(2, 3), 241);
    EXPECT_EQ(m(2, 4), 241);
    EXPECT_EQ(m(2, 7), 0);
    EXPECT_EQ(m(1, 1), 241) << "'A' is 64 + 1";
    EXPECT_EQ(scanner.received(), "Q89");
}

TEST_F(Pdi, ReadUnderWaySendsNoReadCommand)
{
    start();
    scanner.addSheet(sheetOf({{0, 1}}));
    scanner.setReadUnderWay();
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner.received(), "Q9");
    EXPECT_EQ(reader.Side1Array()(1, 2), 241);
}

TEST_F(Pdi, CancelScanEndsAWaitForASheetWithoutAMessage)
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

TEST_F(Pdi, RejectSendsThreeAndTheBatchEndEjectsWithFour)
{
    for (int i = 0; i < 3; ++i)
        scanner.addSheet(sheetOf({{1}}));
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
    EXPECT_EQ(scanner.ejects(), 1);
    EXPECT_EQ(scanner.sheetsLeft(), 1u);
}

TEST_F(Pdi, CloseSendsNineAndReportsFalse)
{
    start();
    EXPECT_FALSE(reader.EndReader());
    scanner.waitReceived(1, 2s);
    EXPECT_EQ(scanner.received(), "9");
    EXPECT_FALSE(Reader::fComm(reader).mscComm.PortOpen());
    EXPECT_TRUE(errors.host->reports.empty());
}

} // namespace
} // namespace zebreader81::test
