// OpScan scanners end to end: the reader against the simulator, checked by what the driver sent.
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "drivers/ncs/basNCS.h"
#include "sim/ncs/OpScanSimulator.h"
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using Op = sim::OpScanSimulator;
Op& op(SimulatedReader& s) { return s.scanner<Op>(); }

struct OpScan : ::testing::Test, SimulatedReader {
    OpScan() : SimulatedReader(zebReaderTypeNCSOpScan2) {}
};

std::vector<std::string> texts(const SafeArray<std::string>& a)
{
    EXPECT_EQ(a.LBound(), 1);
    std::vector<std::string> out;
    for (int32_t i = a.LBound(); i <= a.UBound(); ++i)
        out.push_back(a(i));
    return out;
}

TEST_F(OpScan, BatchOfDuplexSheetsArrivesWithArraysAndBarcodesAndTheLastIsEjected)
{
    reader.Duplex(true);
    reader.DuplexForm(true);
    const sim::Sheet sheets[] = {patternSheet(40, 47, 40, 47, 0, {"12345", "000000007"}),
                                 patternSheet(150, 47, 150, 47, 1), patternSheet(3, 47, 0, 0, 2, {"ABC"})};
    for (const auto& sheet : sheets)
        load(sheet);
    int32_t count = 0;
    ASSERT_TRUE(reader.ReadBatch(false, 3, count));
    EXPECT_TRUE(quiet());
    EXPECT_EQ(count, 3);
    ASSERT_EQ(events->sheets, 3);
    for (std::size_t i = 0; i < 3; ++i) {
        // Rows the sheet does not have, and side 2 of a single-sided sheet, stay 0.
        EXPECT_EQ(events->side1[i], expectedSide(sheets[i], 1, 150, 48)) << i;
        EXPECT_EQ(events->side2[i], expectedSide(sheets[i], 2, 150, 48)) << i;
    }
    EXPECT_EQ(texts(events->barcodes[0]), (std::vector<std::string>{"12345", "000000007"}));
    EXPECT_EQ(texts(events->barcodes[1]), std::vector<std::string>{"?"});
    EXPECT_EQ(texts(events->barcodes[2]), std::vector<std::string>{"ABC"});
    EXPECT_EQ(reader.Side1TimingMarks(), 3);
    EXPECT_EQ(reader.Side2TimingMarks(), 0);
    EXPECT_EQ(sent(), "s0r<DC1>s1<DC1>s1<DC1>s1<DC2>");
}

TEST_F(OpScan, SingleSidedFormGetsNoSideTwoArray)
{
    reader.Duplex(true);
    load(patternSheet(2, 47));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(events->side2.at(0).empty());
    EXPECT_EQ(reader.Side2TimingMarks(), -1) << "side 2 is not counted without DuplexForm";
}

TEST_F(OpScan, ScanModeIsBroughtToOneAndPutBackAtClose)
{
    struct Case {
        int32_t mode;
        bool feeder;
        char state; // the state letter of the full status: an idle scanner ("I") needs DC1 after each change
        std::optional<char> letter;
        std::string start, close;
    };
    const Case cases[] = {
        {1, false, 'I', {}, "s0r", "<SO>"}, // feeder off at close, no mode put back
        {6, true, 'i', {}, "s0ew<EOT><DC1>ei<EOT><DC1>s0r", "ew<EOT><DC1>es<EOT><DC1>"},
        {5, true, 'R', {}, "s0ew<EOT>ei<EOT>s0r", ""},
        {1, true, 'R', 'x', "s0ew<EOT>ei<EOT>s0r", ""}, // an unknown mode letter counts as mode 0
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        attach();
        reader.Feeder(c.feeder);
        op(*this).setMode(c.mode);
        op(*this).setStateLetter(c.state);
        if (c.letter)
            op(*this).setModeLetterOverride(*c.letter, 1);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(sent(), c.start);
        mark();
        // The state letter that counts at close is the one of the last full status query.
        op(*this).setStateLetter('R');
        ASSERT_TRUE(reader.EndReader());
        EXPECT_EQ(sent(), c.close);
    }
}

const std::string noStatus = "There was no response from the scanner while checking status.";
const std::string jam =
    "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form.";

// A status fault fails the sheet and rejects it when a rejecter is fitted.
FaultCase statusFault(const char* name, uint8_t a, uint8_t b, bool rejecter, std::string title,
                      std::string message)
{
    const bool reported = !title.empty();
    FaultCase c(name, zebReaderTypeNCSOpScan2, nullptr, Step::Read, 2, title, message,
                reported ? "basNCS.CheckStatusNCS" : "",
                rejecter && reported ? "...s1<ESC><DC2>" : "...<DC1>s1");
    c.arrange = [=](SimulatedReader& s) {
        s.reader.Rejecter(rejecter), s.load(patternSheet(5, 47)), op(s).setStatusBits(a, b);
    };
    return c;
}

const FaultCase faults[] = {
    statusFault("SkewedPage", 3, 0, true, "Skewed Page",
                "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."),
    statusFault("ThicknessError", 1, 0, true, "Thickness Error",
                "The scanner reports a page thickness error. Please check that the scanner did not double "
                "feed and then rescan this page."),
    statusFault("PaperJam", 0, 8, true, "Paper Jam", jam),
    statusFault("ReadHeadError", 0, 4, false, "Read Head Error",
                "The scanner reports a read head error.  Check with the scanner's manufacturer for support."),
    statusFault("UnreportedPathBits", 0, 1, true, "", ""),
    {"FourByteStatusReply", zebReaderTypeNCSOpScan2,
     [](SimulatedReader& s) {
         op(s).setShortStatusLength(4);
         s.load(patternSheet(1, 47));
         op(s).setStatusBits(0, 8);
     },
     Step::Read, 2, "Paper Jam", jam, "basNCS.CheckStatusNCS", "s0r<DC1>s1"},
    {"TwelfthPollFindingModeOneIsTooLate", zebReaderTypeNCSOpScan2,
     [](SimulatedReader& s) {
         op(s).setMode(2);
         op(s).setStateLetter('R');
         op(s).setModeChangePolls(11);
     },
     Step::Start, 2, "No Response", noStatus, "basNCS.InitReaderNCS",
     "s0ew<EOT>ei<EOT>s0s0s0s0s0s0s0s0s0s0s0s0",
     [](SimulatedReader& s) {
         EXPECT_EQ(op(s).fullStatusPolls(), 1 + 12);
         EXPECT_EQ(op(s).reportedMode(), 1);
     }},
    {"SilentScanner", zebReaderTypeNCSOpScan2, [](SimulatedReader& s) { s.peer().setSilent(true); },
     Step::Start, 2, "No Response", noStatus, "basNCS.GetScanModeNCS", "s0"},
    {"HandFedCancel", zebReaderTypeNCSOpScan2, [](SimulatedReader& s) { s.reader.Feeder(false); }, Step::Read,
     0, "", "", "", "s0r<DC1>", nullptr, cancel, std::chrono::milliseconds(300)},
    {"FormLongerThan150Rows", zebReaderTypeNCSOpScan2,
     [](SimulatedReader& s) { s.load(patternSheet(151, 47)); }, Step::Read, 0, "", "Subscript out of range",
     "basNCS.ReadPageNCS", "s0r<DC1>"},
};
INSTANTIATE_TEST_SUITE_P(OpScan, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

TEST_F(OpScan, ImprinterGetsPositionThenTextOfTheFirstBufferOnEveryModel)
{
    const zebReaderType models[] = {
        zebReaderTypeNCSOpScan2, zebReaderTypeNCSOpScan3,        zebReaderTypeNCSOpScan4,
        zebReaderTypeNCSOpScan5, zebReaderTypeNCSOpScan7,        zebReaderTypeNCSOpScan6,
        zebReaderTypeNCSOpScan8, zebReaderTypeNCSOpScaniNSIGHT4, zebReaderTypeNCSOpScaniNSIGHT2};
    auto printer = reader.Printer();
    printer->Enabled(true);
    printer->Active(true);
    printer->Buffer1("No 12");
    printer->Buffer2("not printed");
    for (auto model : models) {
        SCOPED_TRACE(model);
        mark();
        reader.ReaderType(model);
        printer->Distance(7); // each change of model resets it
        load(patternSheet(1, 47));
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(reader.ReadPage(true));
        EXPECT_EQ(events->log.back(), "AfterSheet(False)");
        reader.EjectPage();
        ASSERT_TRUE(reader.EndReader());
        EXPECT_EQ(sent(), "s0r<DC1>s1107<EOT>2No 12 <EOT><DC2>");
    }
    EXPECT_TRUE(quiet());
}

TEST_F(OpScan, RejectNeedsARejecterAndReplacesTheEndOfBatchEject)
{
    load(patternSheet(1, 47));
    load(patternSheet(1, 47));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage(); // no rejecter fitted: nothing goes out, yet the sheet counts as handled
    reader.EjectPage();
    ASSERT_TRUE(reader.ReadPage());
    reader.EjectPage();
    reader.RejectPage();
    ASSERT_TRUE(reader.EndReader());
    EXPECT_EQ(sent(), "s0r<DC1>s1<DC1>s1<DC2>");

    mark();
    reader.Rejecter(true);
    load(patternSheet(2, 47));
    load(patternSheet(2, 47));
    events->onReadSheet = [this](int sheet, bool&) {
        if (sheet == 4)
            reader.RejectPage();
    };
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(sent(), "s0r<DC1>s1<DC1>s1<ESC><DC2>");
}

TEST_F(OpScan, StrayBytesAndALateStatusTailAreDrainedBeforeTheSheet)
{
    // The CR of "s1" trails on a slow line; left behind, it would end the next sheet's page
    // stream before its first row.
    op(*this).setShortStatusTailDelay(std::chrono::milliseconds(1));
    load(patternSheet(3, 47, 0, 0, 1));
    load(patternSheet(3, 47, 0, 0, 2));
    ASSERT_TRUE(reader.StartReader());
    peer().inject("a12\r\x15");
    auto& com = Reader::fComm(reader).mscComm;
    for (int i = 0; i < 200 && com.InBufferCount() < 5; ++i)
        frmComm::Sleep(5);
    ASSERT_TRUE(reader.ReadPage());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(quiet());
    EXPECT_EQ(events->side1.at(0), expectedSide(patternSheet(3, 47, 0, 0, 1), 1, 150, 48));
    EXPECT_EQ(events->side1.at(1), expectedSide(patternSheet(3, 47, 0, 0, 2), 1, 150, 48));
    EXPECT_EQ(reader.Side1TimingMarks(), 3);
}

TEST_F(OpScan, ScanModeZeroIsRefusedAndOthersOutsideTheTableGoOutWithoutALetter)
{
    checkComplaints = false;
    ASSERT_TRUE(reader.StartReader());
    mark();
    EXPECT_FALSE(basNCS::SetScanModeNCS(reader, 0));
    expectReport(2, "Invalid Scan Mode", "An invalid scan mode was specified.", "basNCS.SetScanModeNCS");
    EXPECT_TRUE(basNCS::SetScanModeNCS(reader, 7));
    EXPECT_TRUE(basNCS::SetScanModeNCS(reader, -1));
    EXPECT_EQ(sent(), "e<EOT><DC1>e<EOT><DC1>");
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
