// OpScan scanners end to end: the reader object over a pseudo-terminal against the simulator.
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "drivers/ncs/basNCS.h"
#include "sim/ncs/OpScanSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using Commands = std::vector<std::string>;

const std::string EOT(1, '\x04');
const std::string DC1(1, '\x11');
const std::string DC2(1, '\x12');
const std::string SO(1, '\x0e');
const std::string ESC_DC2("\x1b\x12");

// A sheet whose cell (r, c) holds (r + c + seed) % 16, so every cell tells where it came from.
sim::Sheet patternSheet(int rows, int seed, bool duplex, std::vector<std::string> barcodes = {})
{
    sim::Sheet sheet;
    auto side = [rows](int s) {
        std::vector<std::vector<int>> out(static_cast<std::size_t>(rows), std::vector<int>(48));
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < 48; ++c)
                out[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] = (r + c + s) % 16;
        return out;
    };
    sheet.side1 = side(seed);
    if (duplex)
        sheet.side2 = side(seed + 7);
    sheet.barcodes = std::move(barcodes);
    return sheet;
}

struct OpScan : ::testing::Test {
    HostScope errors;
    sim::OpScanSimulator scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();
    std::size_t bytesSent = 0;

    OpScan()
    {
        sim::mapPort(3, scanner.path());
        reader.ReaderType(zebReaderTypeNCSOpScan2);
        reader.Port(3);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.Feeder(true);
        reader.Advise(events);
        Reader::fComm(reader).mscComm.setTrace([this](bool sent, const std::string& bytes) {
            if (sent)
                bytesSent += bytes.size();
        });
    }

    // What the scanner made of everything the driver sent so far.
    Commands commands() const
    {
        EXPECT_TRUE(scanner.waitProcessed(bytesSent, std::chrono::seconds(2)));
        return scanner.commands();
    }

    // Commands from the last "s1" on.
    Commands afterLastStatus() const
    {
        const auto all = commands();
        for (auto it = all.rbegin(); it != all.rend(); ++it)
            if (*it == "s1")
                return Commands(it.base() - 1, all.end());
        return {};
    }

    void expectOneDeviceReport(const std::string& title, const std::string& message,
                               const std::string& location)
    {
        const auto& report = errors.host->only();
        EXPECT_EQ(report.kind, 2);
        EXPECT_EQ(report.title, title);
        EXPECT_EQ(report.description, message);
        EXPECT_EQ(report.location, location);
    }
};

TEST_F(OpScan, BatchOfDuplexSheetsArrivesInReadSheetWithArraysAndBarcodes)
{
    reader.Duplex(true);
    reader.DuplexForm(true);
    scanner.addSheet(patternSheet(40, 0, true, {"12345", "000000007"}));
    scanner.addSheet(patternSheet(150, 1, true));
    scanner.addSheet(patternSheet(3, 2, false, {"ABC"}));

    int32_t count = 0;
    ASSERT_TRUE(reader.ReadBatch(false, 3, count));
    EXPECT_TRUE(errors.host->reports.empty());
    ASSERT_EQ(events->sheets, 3);
    EXPECT_EQ(count, 3);

    for (int s = 0; s < 3; ++s) {
        const auto& side1 = events->side1[static_cast<std::size_t>(s)];
        const auto& side2 = events->side2[static_cast<std::size_t>(s)];
        for (const auto* side : {&side1, &side2}) {
            EXPECT_EQ(side->LBound(1), 1);
            EXPECT_EQ(side->UBound(1), 150);
            EXPECT_EQ(side->LBound(2), 1);
            EXPECT_EQ(side->UBound(2), 48);
        }
        EXPECT_EQ(side1(1, 1), (0 + 0 + s) % 16);
        EXPECT_EQ(side1(3, 5), (2 + 4 + s) % 16);
        EXPECT_EQ(side1(3, 48), 0);
    }
    EXPECT_EQ(events->side2[0](2, 10), (1 + 9 + 7) % 16);
    EXPECT_EQ(events->side1[1](150, 47), (149 + 46 + 1) % 16);
    EXPECT_EQ(events->side2[1](150, 1), (149 + 0 + 8) % 16);
    EXPECT_EQ(events->side1[0](41, 1), 0) << "rows the sheet does not have stay 0";
    EXPECT_EQ(events->side2[2](1, 1), 0) << "a single-sided sheet leaves side 2 blank";

    const auto& codes = events->barcodes;
    ASSERT_EQ(codes[0].LBound(), 1);
    ASSERT_EQ(codes[0].UBound(), 2);
    EXPECT_EQ(codes[0](1), "12345");
    EXPECT_EQ(codes[0](2), "000000007");
    ASSERT_EQ(codes[1].UBound(), 1);
    EXPECT_EQ(codes[1](1), "?");
    EXPECT_EQ(codes[2](1), "ABC");

    EXPECT_EQ(reader.Side1TimingMarks(), 3);
    EXPECT_EQ(reader.Side2TimingMarks(), 0);
    EXPECT_EQ(afterLastStatus(), (Commands{"s1", DC2})) << "the batch's last sheet is ejected";
    EXPECT_TRUE(scanner.violations().empty());
}

TEST_F(OpScan, SingleSidedFormGetsNoSideTwoArray)
{
    reader.Duplex(true);
    scanner.addSheet(patternSheet(2, 0, false));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(events->side2.at(0).empty());
    EXPECT_EQ(reader.Side2TimingMarks(), -1) << "side 2 is not counted without DuplexForm";
    reader.EndReader();
}

TEST_F(OpScan, ScannerInModeOneGetsOnlyStatusAndReady)
{
    reader.Feeder(false);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(commands(), (Commands{"s0", "r"}));
    ASSERT_TRUE(reader.EndReader());
    EXPECT_EQ(commands(), (Commands{"s0", "r", SO})) << "feeder off at close, no mode put back";
}

TEST_F(OpScan, ScannerInModeSixIsSwitchedThroughFiveAndPutBackAtClose)
{
    scanner.setMode(6);
    scanner.setStateLetter('i'); // upper-cased by the driver: an idle scanner needs DC1 after each change
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(commands(), (Commands{"s0", "ew" + EOT, DC1, "ei" + EOT, DC1, "s0", "r"}));
    scanner.setStateLetter('R');
    ASSERT_TRUE(reader.EndReader());
    const auto all = commands();
    EXPECT_EQ(Commands(all.begin() + 7, all.end()), (Commands{"ew" + EOT, DC1, "es" + EOT, DC1}))
        << "the state letter is the one of the last full status query";
    EXPECT_TRUE(scanner.violations().empty());
}

TEST_F(OpScan, ScannerInModeFiveIsLeftInModeOne)
{
    scanner.setMode(5);
    scanner.setStateLetter('R');
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.EndReader());
    EXPECT_EQ(commands(), (Commands{"s0", "ew" + EOT, "ei" + EOT, "s0", "r"}));
}

TEST_F(OpScan, UnknownModeLetterCountsAsModeZero)
{
    scanner.setModeLetterOverride('x', 1);
    scanner.setStateLetter('R');
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(commands(), (Commands{"s0", "ew" + EOT, "ei" + EOT, "s0", "r"}));
}

TEST_F(OpScan, EleventhPollMayStillFindModeOne)
{
    scanner.setMode(2);
    scanner.setStateLetter('R');
    scanner.setModeChangePolls(10);
    EXPECT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner.fullStatusPolls(), 1 + 11);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(OpScan, TwelfthPollReportsNoResponseEvenWhenItFindsModeOne)
{
    scanner.setMode(2);
    scanner.setStateLetter('R');
    scanner.setModeChangePolls(11);
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(scanner.fullStatusPolls(), 1 + 12);
    EXPECT_EQ(scanner.reportedMode(), 1);
    expectOneDeviceReport("No Response", "There was no response from the scanner while checking status.",
                          "basNCS.InitReaderNCS");
    EXPECT_EQ(commands().back(), "s0") << "no \"r\" after a failed start";
}

TEST_F(OpScan, SilentScannerFailsTheStatusQuery)
{
    scanner.setSilent(true);
    EXPECT_FALSE(reader.StartReader());
    expectOneDeviceReport("No Response", "There was no response from the scanner while checking status.",
                          "basNCS.GetScanModeNCS");
    EXPECT_TRUE(reader.CancelScan());
}

struct StatusCase {
    uint8_t a, b;
    const char* title;
    const char* message;
};

struct OpScanStatus : OpScan, ::testing::WithParamInterface<std::tuple<StatusCase, bool>> {};

TEST_P(OpScanStatus, StatusErrorFailsTheSheetAndRejectsItWhenARejecterIsFitted)
{
    const auto& [status, rejecter] = GetParam();
    reader.Rejecter(rejecter);
    scanner.addSheet(patternSheet(5, 0, false));
    scanner.setStatusBits(status.a, status.b);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(events->sheets, 0) << "the arrays are not handed over";
    if (*status.title) {
        expectOneDeviceReport(status.title, status.message, "basNCS.CheckStatusNCS");
        EXPECT_EQ(afterLastStatus(), (rejecter ? Commands{"s1", ESC_DC2} : Commands{"s1"}));
    } else {
        EXPECT_TRUE(errors.host->reports.empty());
        EXPECT_EQ(afterLastStatus(), Commands{"s1"});
    }
}

const StatusCase statusCases[] = {
    {3, 0, "Skewed Page",
     "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."},
    {1, 0, "Thickness Error",
     "The scanner reports a page thickness error. Please check that the scanner did not double feed and then "
     "rescan this page."},
    {0, 8, "Paper Jam",
     "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form."},
    {0, 4, "Read Head Error",
     "The scanner reports a read head error.  Check with the scanner's manufacturer for support."},
    {0, 1, "", ""},
};

INSTANTIATE_TEST_SUITE_P(Faults, OpScanStatus,
                         ::testing::Combine(::testing::ValuesIn(statusCases), ::testing::Bool()));

TEST_F(OpScan, ImprinterGetsPositionThenTextOfTheFirstBuffer)
{
    scanner.addSheet(patternSheet(2, 0, false));
    auto printer = reader.Printer();
    printer->Enabled(true);
    printer->Active(true);
    printer->Distance(7);
    printer->Buffer1("No 12");
    printer->Buffer2("not printed");
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage(true));
    EXPECT_EQ(afterLastStatus(), (Commands{"s1", "107" + EOT, "2No 12 " + EOT}));
    EXPECT_EQ(events->log.back(), "AfterSheet(False)");
    EXPECT_TRUE(scanner.violations().empty());
}

TEST_F(OpScan, RejectPageFromTheReadSheetHandlerReplacesTheEndOfBatchEject)
{
    reader.Rejecter(true);
    scanner.addSheet(patternSheet(2, 0, false));
    scanner.addSheet(patternSheet(2, 1, false));
    events->onReadSheet = [this](int sheet, bool&) {
        if (sheet == 2)
            reader.RejectPage();
    };
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(afterLastStatus(), (Commands{"s1", ESC_DC2}));
    EXPECT_TRUE(scanner.violations().empty());
}

TEST_F(OpScan, HandFedWaitEndsQuietlyOnCancelScan)
{
    reader.Feeder(false);
    ASSERT_TRUE(reader.StartReader());
    int turns = 0;
    reader.SetYieldCallback([&] {
        if (++turns == 3)
            reader.CancelScan(true);
    });
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_GE(turns, 3);
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_EQ(commands().back(), DC1);
}

TEST_F(OpScan, EmptyFeederTimesOutWaitingForThePage)
{
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    expectOneDeviceReport("No Response", "There was no response from the scanner while scanning a page.",
                          "basNCS.ReadPageNCS");
}

TEST_F(OpScan, ScannerStoppingInMidPageReportsNoResponseWhileReadingData)
{
    scanner.addSheet(patternSheet(10, 0, false));
    scanner.stallNextSheetAfter(100);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    expectOneDeviceReport("No Response", "There was no response from the scanner while reading data.",
                          "basNCS.ReadPageNCS");
    EXPECT_EQ(events->sheets, 0);
}

TEST_F(OpScan, ShortRowFromTheScannerIsReported)
{
    scanner.feedRawOnce("a" + std::string(48, '0') + "a" + std::string(46, '0') + "a\r");
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    expectOneDeviceReport("Invalid Number of Bytes",
                          "The scanner reported an invalid number of bytes on side 1\r\n\r\n"
                          "Invalid number of bytes: 46\r\nLine number: 2",
                          "basNCS.ReadPageNCS");

    // The next sheet reads cleanly.
    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner.addSheet(patternSheet(1, 4, false));
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(events->side1.at(0)(1, 1), 4);
}

TEST_F(OpScan, FormLongerThan150RowsAndUnexpectedSideTwoAreRunTimeErrors)
{
    scanner.addSheet(patternSheet(151, 0, false));
    scanner.addSheet(patternSheet(2, 0, true));
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    reader.CancelScan(false);
    EXPECT_FALSE(reader.ReadPage());
    ASSERT_EQ(errors.host->reports.size(), 2u);
    for (const auto& report : errors.host->reports) {
        EXPECT_EQ(report.kind, 0);
        EXPECT_EQ(report.number, 9);
        EXPECT_EQ(report.description, "Subscript out of range");
        EXPECT_EQ(report.location, "basNCS.ReadPageNCS");
    }
}

TEST_F(OpScan, StrayBytesOnTheLineAreDrainedBeforeTheSheet)
{
    scanner.addSheet(patternSheet(2, 5, false));
    ASSERT_TRUE(reader.StartReader());
    scanner.inject("a12\r\x15");
    auto& com = Reader::fComm(reader).mscComm;
    for (int i = 0; i < 200 && com.InBufferCount() < 5; ++i)
        frmComm::Sleep(5);
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(events->side1.at(0)(2, 1), 6);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(OpScan, ScannerThatHangsUpIsARunTimeErrorNotAHang)
{
    scanner.addSheet(patternSheet(2, 0, false));
    ASSERT_TRUE(reader.StartReader());
    scanner.hangUp();
    EXPECT_FALSE(reader.ReadPage());
    const auto& report = errors.host->only();
    EXPECT_EQ(report.kind, 0);
    EXPECT_EQ(report.location, "basNCS.ReadPageNCS");
}

TEST_F(OpScan, AllNineModelsShareOneCodePath)
{
    const zebReaderType models[] = {
        zebReaderTypeNCSOpScan2, zebReaderTypeNCSOpScan3,        zebReaderTypeNCSOpScan4,
        zebReaderTypeNCSOpScan5, zebReaderTypeNCSOpScan7,        zebReaderTypeNCSOpScan6,
        zebReaderTypeNCSOpScan8, zebReaderTypeNCSOpScaniNSIGHT4, zebReaderTypeNCSOpScaniNSIGHT2};
    reader.Printer()->Enabled(true);
    reader.Printer()->Active(true);
    reader.Printer()->Buffer1("x");
    for (auto model : models) {
        SCOPED_TRACE(model);
        const std::size_t before = commands().size();
        reader.ReaderType(model);
        reader.Printer()->Distance(12); // each change of model resets it
        scanner.addSheet(patternSheet(1, 0, false));
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(reader.ReadPage(true));
        reader.EjectPage();
        ASSERT_TRUE(reader.EndReader());
        const auto all = commands();
        EXPECT_EQ(Commands(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
                  (Commands{"s0", "r", DC1, "s1", "112" + EOT, "2x " + EOT, DC2}));
    }
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(scanner.violations().empty());
}

TEST_F(OpScan, RejectPageNeedsARejecterAndEjectPageSendsDc2)
{
    scanner.addSheet(patternSheet(1, 0, false));
    scanner.addSheet(patternSheet(1, 1, false));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage(); // no rejecter fitted: nothing goes out, yet the sheet counts as handled
    reader.EjectPage();
    EXPECT_EQ(afterLastStatus(), Commands{"s1"});
    ASSERT_TRUE(reader.ReadPage());
    reader.EjectPage();
    reader.RejectPage();
    EXPECT_EQ(afterLastStatus(), (Commands{"s1", DC2}));
}

TEST_F(OpScan, FourByteStatusReplyIsEnough)
{
    scanner.setShortStatusLength(4);
    scanner.addSheet(patternSheet(1, 3, false));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(errors.host->reports.empty());

    scanner.setStatusBits(0, 8);
    scanner.addSheet(patternSheet(1, 3, false));
    EXPECT_FALSE(reader.ReadPage());
    expectOneDeviceReport(
        "Paper Jam",
        "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form.",
        "basNCS.CheckStatusNCS");
}

TEST_F(OpScan, LateTailOfAStatusReplyDoesNotEndTheNextPage)
{
    // The fifth byte (CR) of "s1" trails on a slow line; left behind, it would end the next
    // sheet's page stream before its first row.
    scanner.setShortStatusTailDelay(std::chrono::milliseconds(1));
    scanner.addSheet(patternSheet(3, 1, false));
    scanner.addSheet(patternSheet(3, 2, false));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(errors.host->reports.empty());
    ASSERT_EQ(events->side1.size(), 2u);
    EXPECT_NE(events->side1[0], events->side1[1]);
    EXPECT_EQ(reader.Side1TimingMarks(), 3);
    reader.EndReader();
}

TEST_F(OpScan, ScanModeZeroIsRefusedAndOthersOutsideTheTableGoOutWithoutALetter)
{
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(basNCS::SetScanModeNCS(reader, 0));
    expectOneDeviceReport("Invalid Scan Mode", "An invalid scan mode was specified.",
                          "basNCS.SetScanModeNCS");
    EXPECT_EQ(commands().back(), "r") << "nothing sent for mode 0";

    EXPECT_TRUE(basNCS::SetScanModeNCS(reader, 7));
    EXPECT_TRUE(basNCS::SetScanModeNCS(reader, -1));
    const auto all = commands();
    EXPECT_EQ(Commands(all.end() - 4, all.end()), (Commands{"e" + EOT, DC1, "e" + EOT, DC1}));
}

TEST_F(OpScan, SleepTimeZeroBecomesFiftyAtClose)
{
    reader.SleepTime(0);
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.EndReader());
    EXPECT_EQ(reader.SleepTime(), 50);
}

} // namespace
} // namespace zebreader81::test
