// The ScanMark driver end to end: clsZEBReader against the ScanMark simulator on a
// pseudo-terminal.
#include "drivers/scantron/basScantron.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace zebreader81::test {
namespace {

using Sim = sim::ScanMarkSimulator;
using Strings = std::vector<std::string>;
constexpr int16_t port = 5;

// Distinct strengths per cell that stay clear of 13, which an 8000 cannot send.
int strength(int side, int row, int col) { return (row + 2 * col + 5 * side) % 13; }

sim::Sheet sheet(int rows1, int cols1, int rows2 = 0, int cols2 = 0)
{
    sim::Sheet s;
    s.side1.assign(static_cast<std::size_t>(rows1), std::vector<int>(static_cast<std::size_t>(cols1)));
    s.side2.assign(static_cast<std::size_t>(rows2), std::vector<int>(static_cast<std::size_t>(cols2)));
    for (int r = 1; r <= rows1; ++r)
        for (int c = 1; c <= cols1; ++c)
            s.side1[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)] = strength(1, r, c);
    for (int r = 1; r <= rows2; ++r)
        for (int c = 1; c <= cols2; ++c)
            s.side2[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)] = strength(2, r, c);
    return s;
}

// The simulator works on its own thread: give it a moment to catch up with the driver.
bool eventually(const std::function<bool()>& done)
{
    for (int i = 0; i < 400 && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
}

SafeArray<int16_t> perSheet(std::initializer_list<int16_t> values)
{
    auto a = SafeArray<int16_t>::vector(0, static_cast<int32_t>(values.size()));
    int32_t i = 1;
    for (int16_t v : values)
        a(i++) = v;
    return a;
}

std::shared_ptr<clsZEBReaderWindow> area(int16_t startRow, int16_t numRows, int16_t rowGap, int16_t startCol,
                                         int16_t numCols, int16_t colGap, int16_t page, int16_t orientation)
{
    auto w = std::make_shared<clsZEBReaderWindow>();
    w->StartRow(startRow), w->NumRows(numRows), w->RowGap(rowGap);
    w->StartCol(startCol), w->NumCols(numCols), w->ColGap(colGap);
    w->Page(page), w->Orientation(orientation);
    return w;
}

struct ScanMarkDriver : ::testing::Test {
    HostScope errors;
    std::unique_ptr<Sim> scanner;
    clsZEBReader reader;

    void open(zebReaderType type, std::vector<sim::Sheet> sheets = {})
    {
        scanner = std::make_unique<Sim>(type, std::move(sheets));
        sim::mapPort(port, scanner->path());
        reader.ReaderType(type);
        reader.Port(port);
        reader.TimeOut(1);
        reader.SleepTime(2);
        // A pseudo-terminal keeps 8 data bits and refuses 7 on a second open.
        reader.DataBits(zebReaderDataBits8);
        reader.Feeder(true);
    }
    void form(std::initializer_list<int16_t> rows1, std::initializer_list<int16_t> cols1,
              std::initializer_list<int16_t> rows2 = {}, std::initializer_list<int16_t> cols2 = {})
    {
        reader.Side1Rows(perSheet(rows1));
        reader.Side1Cols(perSheet(cols1));
        reader.Side2Rows(perSheet(rows2));
        reader.Side2Cols(perSheet(cols2));
    }
    // The download part of the commands: what follows the first reset.
    Strings download() const
    {
        const auto all = scanner->commands();
        return all.empty() ? all : Strings(all.begin() + 1, all.end());
    }
    // After a failed start: clear the cancel the failure set (so that the closing reset is
    // answered before the port closes), close, and forget the reports.
    void restart()
    {
        reader.CancelScan(false);
        reader.EndReader();
        errors.host->reports.clear();
    }
    void TearDown() override
    {
        if (scanner) {
            EXPECT_EQ(scanner->violations(), Strings{});
        }
    }
};

TEST_F(ScanMarkDriver, PageModeDownloadForAScanMarkModel)
{
    open(zebReaderTypeScantronScanMark2000);
    form({10, 0, 4}, {20, 8, 50});
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->commands(), (Strings{"SRST", "FRM=FS 10 0 20 N N N", "FRM=DK 1 1 1 10 20 L 10 20",
                                            "FRM=LS", "FRM=FS 0 0 8 N N N", "FRM=LS", "FRM=FS 4 0 50 N N N",
                                            "FRM=DK 1 1 1 4 50 L 4 50", "FRM=LS"}));
    EXPECT_EQ(scanner->received().substr(0, 12), "\x1bSRST\r\x1b"
                                                 "FRM=F");
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(ScanMarkDriver, The8000GetsItsThresholdFirstAndMarkColumnRecordsPerSide)
{
    open(zebReaderTypeScantron8000);
    reader.RecognitionThreshold(9);
    reader.Duplex(true);
    reader.DuplexForm(true);
    form({6}, {5}, {3}, {4});
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(download(), (Strings{"THR= 9", "FRM=FS 6 3 5 N N N", "FRM=MC Y N 1 1 1 1 6 5 L 6 5 11111",
                                   "FRM=MC Y N 1 2 1 1 3 4 L 3 4 1111", "FRM=LS"}));
    EXPECT_EQ(scanner->threshold(), 9);
    EXPECT_EQ(basScantron::ScanMarkCharBase, 0);
}

TEST_F(ScanMarkDriver, DuplexScannerWithASingleSidedFormDefinesNoSideTwo)
{
    open(zebReaderTypeScantronScanMark4000);
    reader.Duplex(true);
    reader.DuplexForm(false);
    form({6}, {5}, {3}, {4});
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(download(), (Strings{"FRM=FS 6 0 5 N N N", "FRM=DK 1 1 1 6 5 L 6 5", "FRM=LS"}));
    EXPECT_EQ(basScantron::ScanMarkCharBase, 48);

    // A duplex form with an empty second side still starts with its row count.
    reader.EndReader();
    reader.DuplexForm(true);
    form({6}, {5}, {0}, {4});
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->commands().back(), "FRM=LS");
    EXPECT_EQ(scanner->commands().at(scanner->commands().size() - 3), "FRM=FS 6 0 5 N N N");
}

struct WindowForm : ScanMarkDriver {
    void SetUp() override
    {
        open(zebReaderTypeScantronScanMark2500);
        reader.RecognitionMode(zebRecognitionTypeWindow);
        reader.Duplex(true);
        reader.DuplexForm(true);
        form({12}, {10}, {9}, {8});
        auto& w = *reader.Windows();
        w.Add(area(2, 3, 2, 1, 2, 1, 0, 1));   // page 0 is side 1; rows 2, 4, 6
        w.Add(area(12, 3, -5, 4, 3, 2, 1, 0)); // rows 2, 7, 12 from the low corner, column by column
        w.Add(area(3, 2, 1, 2, 2, 3, 2, 1));   // side 2
        w.Add(area(1, 1, 1, 1, 1, 1, 1, 1));   // page 1 after a page 2: on neither side
        w.Add(area(9, 2, -1, 8, 1, 1, 2, 0));  // side 2, rows 8 and 9
        w.Add(area(1, 1, 1, 1, 1, 1, 3, 1));   // page 3 ends the side-2 walk
        w.Add(area(1, 1, 1, 1, 1, 1, 2, 1));
    }
};

TEST_F(WindowForm, DownloadSendsOneRecordPerAreaWalkedPerSide)
{
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(download(),
              (Strings{"FRM=FS 12 9 10 N N N", "FRM=DK 1 2 1 6 2 L 3 2", "FRM=DK 1 2 4 12 8 C 3 3",
                       "FRM=DK 2 3 2 4 5 L 2 2", "FRM=DK 2 8 8 9 8 C 1 2", "FRM=LS"}));
}

TEST_F(WindowForm, ReadPutsEachCharacterInItsCell)
{
    scanner->addSheet(sheet(12, 10, 9, 8));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner->commands().back(), "QSTS");
    EXPECT_NE(std::find(scanner->commands().begin(), scanner->commands().end(), "READ 5 Y E"),
              scanner->commands().end());

    const auto s1 = reader.Side1Array();
    const auto s2 = reader.Side2Array();
    ASSERT_EQ(s1.UBound(1), 12);
    ASSERT_EQ(s1.UBound(2), 10);
    ASSERT_EQ(s2.UBound(1), 9);
    ASSERT_EQ(s2.UBound(2), 8);
    auto expected1 = SafeArray<int16_t>::matrix(1, 12, 1, 10);
    for (int r : {2, 4, 6})
        for (int c : {1, 2})
            expected1(r, c) = static_cast<int16_t>(strength(1, r, c));
    for (int r : {2, 7, 12})
        for (int c : {4, 6, 8})
            expected1(r, c) = static_cast<int16_t>(strength(1, r, c));
    EXPECT_EQ(s1, expected1);
    auto expected2 = SafeArray<int16_t>::matrix(1, 9, 1, 8);
    for (int r : {3, 4})
        for (int c : {2, 5})
            expected2(r, c) = static_cast<int16_t>(strength(2, r, c));
    expected2(8, 8) = static_cast<int16_t>(strength(2, 8, 8));
    expected2(9, 8) = static_cast<int16_t>(strength(2, 9, 8));
    EXPECT_EQ(s2, expected2);
}

TEST_F(WindowForm, RejectedSideTwoFieldReportsItsLocationBlockAndResetsAgain)
{
    scanner->rejectCommand("FRM=DK 2 8");
    EXPECT_FALSE(reader.StartReader());
    const auto& r = errors.host->only();
    EXPECT_EQ(r.description,
              "An error occurred trying to download the form definition to the Scantron scanner. "
              "Invalid sheet definition\r\n\r\nSheet: 1\r\nSide: 2\r\nField: 5");
    EXPECT_EQ(r.title, "Initialize Error");
    EXPECT_EQ(r.location, "basScantron.DownloadFormST");
    EXPECT_EQ(r.kind, 2);
    EXPECT_EQ(scanner->commands().back(), "SRST");
    EXPECT_TRUE(reader.CancelScan());
}

TEST_F(WindowForm, AnAreaOverflowingSixteenBitsEndsTheDownloadAsError6)
{
    reader.Windows()->Add(area(1, 30000, 2, 1, 1, 1, 1, 1), 1);
    EXPECT_FALSE(reader.StartReader());
    const auto& r = errors.host->only();
    EXPECT_EQ(r.number, 6);
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.location, "basScantron.DownloadFormST");
}

TEST_F(ScanMarkDriver, PageModeFieldRefusalsCarryTheirOwnPunctuation)
{
    open(zebReaderTypeScantronScanMark2000);
    form({5, 6}, {4, 4}, {3, 3}, {2, 2});
    reader.Duplex(true);
    reader.DuplexForm(true);
    scanner->rejectCommand("FRM=DK 1 1 1 6");
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(
        errors.host->only().description,
        "An error occurred trying to download the form definition to the Scantron scanner.  Invalid sheet "
        "definition.\r\n\r\nSheet: 2\r\nSide: 1");

    restart();
    scanner->rejectCommand("FRM=DK 2");
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(
        errors.host->only().description,
        "An error occurred trying to download the form definition to the Scantron scanner.  Invalid sheet "
        "definition\r\n\r\nSheet: 1\r\nSide: 2");

    restart();
    scanner->rejectCommand("FRM=LS");
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(errors.host->only().description,
              "An error occurred trying to download the form definition to the "
              "Scantron scanner while issuing the end of form command.");
}

TEST_F(ScanMarkDriver, PageReadOfADuplexSheet)
{
    open(zebReaderTypeScantronScanMark5500, {sheet(4, 6, 3, 5)});
    reader.Duplex(true);
    reader.DuplexForm(true);
    form({4}, {6}, {3}, {5});
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner->commands().at(scanner->commands().size() - 3), "QSTS");
    EXPECT_EQ(scanner->commands().at(scanner->commands().size() - 2), "READ 5 Y") << "no rejecter";

    const auto s1 = reader.Side1Array();
    const auto s2 = reader.Side2Array();
    ASSERT_EQ(s1.UBound(1), 4);
    ASSERT_EQ(s1.UBound(2), 6);
    ASSERT_EQ(s2.UBound(1), 3);
    ASSERT_EQ(s2.UBound(2), 5);
    for (int r = 1; r <= 4; ++r)
        for (int c = 1; c <= 6; ++c)
            EXPECT_EQ(s1(r, c), strength(1, r, c)) << r << "," << c;
    for (int r = 1; r <= 3; ++r)
        for (int c = 1; c <= 5; ++c)
            EXPECT_EQ(s2(r, c), strength(2, r, c)) << r << "," << c;
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(ScanMarkDriver, The8000DeliversRawBytesAndTheRejecterAddsE)
{
    open(zebReaderTypeScantron8400, {sheet(2, 3), sheet(2, 3)});
    reader.Rejecter(true);
    form({2}, {3});
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanner->commands().at(scanner->commands().size() - 2), "READ 5 Y E");
    const auto s1 = reader.Side1Array();
    for (int r = 1; r <= 2; ++r)
        for (int c = 1; c <= 3; ++c)
            EXPECT_EQ(s1(r, c), strength(1, r, c));
    EXPECT_TRUE(reader.Side2Array().empty());
    ASSERT_TRUE(reader.ReadPage()) << "the next sheet starts clean";
    EXPECT_EQ(scanner->sheetsRead(), 2);
}

TEST_F(ScanMarkDriver, HandFeedingPollsUntilASheetIsReady)
{
    open(zebReaderTypeScantronScanMarkES2010);
    reader.Feeder(false);
    form({2}, {2});
    ASSERT_TRUE(reader.StartReader());
    std::thread feeder([&] {
        for (int i = 0; i < 500; ++i) {
            const auto c = scanner->commands();
            if (std::count(c.begin(), c.end(), "QSTS") >= 3)
                break;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        scanner->addSheet(sheet(2, 2));
    });
    const bool read = reader.ReadPage();
    feeder.join();
    EXPECT_TRUE(read);
    EXPECT_EQ(reader.Side1Array()(2, 2), strength(1, 2, 2));
}

TEST_F(ScanMarkDriver, CancelEndsHandFeedingSilently)
{
    open(zebReaderTypeScantronScanMarkES2010);
    reader.Feeder(false);
    form({2}, {2});
    ASSERT_TRUE(reader.StartReader());
    std::thread host([&] {
        scanner->waitReceived(scanner->received().size() + 12, std::chrono::milliseconds(2000));
        reader.CancelScan(true);
    });
    EXPECT_FALSE(reader.ReadPage());
    host.join();
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_EQ(scanner->sheetsRead(), 0);
}

TEST_F(ScanMarkDriver, FeederWithAnEmptyHopperReadsNothing)
{
    open(zebReaderTypeScantronScanMark2000);
    form({2}, {2});
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(scanner->commands().back(), "QSTS");
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(ScanMarkDriver, RejectSendsPrintOffAndEjectsToTheSelectStacker)
{
    open(zebReaderTypeScantronScanMark2000, {sheet(2, 2)});
    reader.Rejecter(true);
    reader.SleepTime(1);
    form({2}, {2});
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    scanner->clearReceived();
    reader.RejectPage();
    const std::string rejectBytes = "\x1bPRN$ 1 N \r\x1b"
                                    "EJCT C\r";
    scanner->waitReceived(rejectBytes.size(), std::chrono::seconds(2));
    EXPECT_EQ(scanner->received(), rejectBytes);

    bool reject = true;
    EXPECT_TRUE(basScantron::RejectPageST(reader, reject));
    reject = false;
    EXPECT_FALSE(basScantron::RejectPageST(reader, reject)) << "an accept answers False even when it worked";
    scanner->waitReceived(2 * rejectBytes.size() + 8, std::chrono::seconds(2));
    EXPECT_TRUE(eventually([&] { return scanner->ejections() == "CCA"; })) << scanner->ejections();
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(ScanMarkDriver, BatchEndAcceptsTheLastSheetWithTheBlank)
{
    open(zebReaderTypeScantronScanMark2250, {sheet(3, 3), sheet(3, 3)});
    form({3}, {3});
    int32_t count = 0;
    ASSERT_TRUE(reader.ReadBatch(false, 2, count));
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(eventually([&] { return scanner->commands().back() == "SRST"; }));
    EXPECT_EQ(scanner->ejections(), "A");
    EXPECT_NE(scanner->received().find("\x1b"
                                       "EJCT A \r"),
              std::string::npos);
    EXPECT_EQ(scanner->commands().back(), "SRST");
}

TEST_F(ScanMarkDriver, ImprintTextIsCutTo125Characters)
{
    open(zebReaderTypeScantronScanMark2000);
    form({1}, {1});
    ASSERT_TRUE(reader.StartReader());
    reader.Printer()->Distance(4);
    reader.Printer()->Buffer1(std::string(120, 'a') + "bcdef");
    EXPECT_TRUE(basScantron::PrintST(reader));
    ASSERT_EQ(scanner->printed().size(), 1u);
    EXPECT_EQ(scanner->printed()[0], "    " + std::string(120, 'a') + "b");

    scanner->rejectCommand("PRN$");
    EXPECT_FALSE(basScantron::PrintST(reader)) << "a reply opening with anything but CR is a refusal";
}

TEST_F(ScanMarkDriver, StatusConditionsAreReportedJamFirst)
{
    open(zebReaderTypeScantronScanMark2000, {sheet(1, 1)});
    form({1}, {1});
    ASSERT_TRUE(reader.StartReader());

    scanner->statusFault(Sim::StatusFault::JamAndDoubleFeed);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(errors.host->only().title, "Paper Jam");

    errors.host->reports.clear();
    scanner->statusFault(Sim::StatusFault::CommandError);
    reader.CancelScan(false);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(errors.host->only().description, "Your Scantron scanner reported a command error. Error #50");

    errors.host->reports.clear();
    scanner->statusFault(Sim::StatusFault::TimingLine);
    reader.CancelScan(false);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(errors.host->only().location, "basScantron.heckStatusST");

    errors.host->reports.clear();
    scanner->statusFault(Sim::StatusFault::DoubleFeed);
    reader.CancelScan(false);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(scanner->sheetsRead(), 0);
    EXPECT_EQ(errors.host->only().title, "Double Feed");
}

TEST_F(ScanMarkDriver, ResetFailures)
{
    open(zebReaderTypeScantronScanMark2000);
    form({1}, {1});
    scanner->rejectCommand("SRST");
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(errors.host->only().title, "Reset Error");
    EXPECT_EQ(errors.host->only().description,
              "An error occurred trying to reset the Scantron scanner.  Please power "
              "the scanner off and on and retry the operation.");
    EXPECT_EQ(scanner->commands(), Strings{"SRST"}) << "no download after a failed reset";

    restart();
    scanner->setSilent(true);
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(errors.host->only().title, "No Response");
    EXPECT_EQ(errors.host->only().location, "basScantron.ResetReaderST");
    scanner->setSilent(false);
}

TEST(ScanMarkDriverPortClosed, ResetSucceedsWithoutSendingAnything)
{
    HostScope errors;
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeScantronScanMark2000);
    EXPECT_TRUE(basScantron::ResetReaderST(reader));
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(ScanMarkDriver, AStalledTransferIsReportedAndFlushed)
{
    open(zebReaderTypeScantronScanMark2000, {sheet(4, 4)});
    form({4}, {4});
    ASSERT_TRUE(reader.StartReader());
    // Status reply, then 50 of the 192 mark characters.
    scanner->stallAfter(12 + 50);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(errors.host->only().description,
              "There was no response from the Scantron scanner. The scanner timed "
              "out waiting to receive the scanned data.");
    EXPECT_EQ(errors.host->only().location, "basScantron.ReadPageST");
}

} // namespace
} // namespace zebreader81::test
