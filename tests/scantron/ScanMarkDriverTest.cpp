// The ScanMark driver end to end: form download, reads, routing and faults against the simulator.
#include "WindowArea.h"
#include "drivers/scantron/basScantron.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using Sim = sim::ScanMarkSimulator;
using Strings = std::vector<std::string>;
Sim& sm(SimulatedReader& s) { return s.scanner<Sim>(); }

struct ScanMark : ::testing::Test, SimulatedReader {
    explicit ScanMark(zebReaderType model = zebReaderTypeScantronScanMark2000) : SimulatedReader(model) {}
    Sim& scanner() { return sm(*this); }
    // The form commands: what follows the first reset.
    Strings download()
    {
        auto all = scanner().commands();
        all.erase(all.begin());
        return all;
    }
};

TEST_F(ScanMark, PageFormsAreDownloadedPerSideAndModel)
{
    struct Case {
        zebReaderType model;
        bool duplex, duplexForm;
        std::vector<std::vector<int16_t>> shape;
        int charBase;
        Strings download;
    };
    const Strings sideOne{"FRM=FS 6 0 5 N N N", "FRM=DK 1 1 1 6 5 L 6 5", "FRM=LS"};
    const Strings threeSheets{
        "FRM=FS 10 0 20 N N N", "FRM=DK 1 1 1 10 20 L 10 20", "FRM=LS", "FRM=FS 0 0 8 N N N", "FRM=LS",
        "FRM=FS 4 0 50 N N N",  "FRM=DK 1 1 1 4 50 L 4 50",   "FRM=LS"};
    // The 8000 gets its threshold first and a mark-column record per side.
    const Strings model8000{"THR= 9", "FRM=FS 6 3 5 N N N", "FRM=MC Y N 1 1 1 1 6 5 L 6 5 11111",
                            "FRM=MC Y N 1 2 1 1 3 4 L 3 4 1111", "FRM=LS"};
    const std::vector<int16_t> one{6}, five{5}, three{3}, four{4}, none{0}, rows{10, 0, 4}, cols{20, 8, 50};
    const Case cases[] = {
        {zebReaderTypeScantronScanMark2000, false, false, {rows, cols, {}, {}}, 48, threeSheets},
        {zebReaderTypeScantron8000, true, true, {one, five, three, four}, 0, model8000},
        // A duplex scanner with a single-sided form defines no side 2; a duplex form with an
        // empty second side still starts with its row count.
        {zebReaderTypeScantronScanMark4000, true, false, {one, five, three, four}, 48, sideOne},
        {zebReaderTypeScantronScanMark4000, true, true, {one, five, none, four}, 48, sideOne},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.download.front());
        reader.ReaderType(c.model);
        attach();
        reader.RecognitionThreshold(9);
        reader.Duplex(c.duplex);
        reader.DuplexForm(c.duplexForm);
        form(reader, c.shape[0], c.shape[1], c.shape[2], c.shape[3]);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner().commands().front(), "SRST");
        EXPECT_EQ(download(), c.download);
        EXPECT_EQ(basScantron::ScanMarkCharBase, c.charBase);
        EXPECT_EQ(scanner().threshold(), c.charBase == 0 ? 9 : 0);
        ASSERT_TRUE(reader.EndReader());
    }
    EXPECT_TRUE(quiet());
}

struct WindowForm : ScanMark {
    WindowForm() : ScanMark(zebReaderTypeScantronScanMark2500)
    {
        reader.RecognitionMode(zebRecognitionTypeWindow);
        reader.Duplex(true);
        reader.DuplexForm(true);
        form(reader, {12}, {10}, {9}, {8});
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

TEST_F(WindowForm, OneRecordPerAreaWalkedPerSideAndEachCharacterInItsCell)
{
    const auto sheet = patternSheet(12, 10, 9, 8);
    load(sheet);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(download(),
              (Strings{"FRM=FS 12 9 10 N N N", "FRM=DK 1 2 1 6 2 L 3 2", "FRM=DK 1 2 4 12 8 C 3 3",
                       "FRM=DK 2 3 2 4 5 L 2 2", "FRM=DK 2 8 8 9 8 C 1 2", "FRM=LS"}));
    mark();
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(sent(), "<ESC>QSTS<CR><ESC>READ 5 Y E<CR><ESC>QSTS<CR>");

    // Only the cells of the areas: side 1 rows 2, 4, 6 by columns 1, 2 and rows 2, 7, 12 by
    // columns 4, 6, 8; side 2 rows 3, 4 by columns 2, 5 and rows 8, 9 of column 8.
    auto expected1 = expectedSide(sheet, 1, 12, 10), expected2 = expectedSide(sheet, 2, 9, 8);
    for (int r = 1; r <= 12; ++r)
        for (int c = 1; c <= 10; ++c)
            if (!(r % 2 == 0 && r <= 6 && c <= 2) && !((r % 5 == 2) && c % 2 == 0 && c >= 4 && c <= 8))
                expected1(r, c) = 0;
    for (int r = 1; r <= 9; ++r)
        for (int c = 1; c <= 8; ++c)
            if (!(r >= 3 && r <= 4 && (c == 2 || c == 5)) && !(r >= 8 && c == 8))
                expected2(r, c) = 0;
    EXPECT_EQ(reader.Side1Array(), expected1);
    EXPECT_EQ(reader.Side2Array(), expected2);
}

TEST_F(WindowForm, RejectedFieldReportsItsLocationBlockAndAnOverflowIsError6)
{
    scanner().rejectCommand("FRM=DK 2 8");
    EXPECT_FALSE(reader.StartReader());
    expectReport(2, "Initialize Error",
                 "An error occurred trying to download the form definition to the Scantron scanner. "
                 "Invalid sheet definition\r\n\r\nSheet: 1\r\nSide: 2\r\nField: 5",
                 "basScantron.DownloadFormST");
    EXPECT_EQ(scanner().commands().back(), "SRST");
    EXPECT_TRUE(reader.CancelScan());

    reader.EndReader();
    reset();
    reader.Windows()->Add(area(1, 30000, 2, 1, 1, 1, 1, 1), 1);
    EXPECT_FALSE(reader.StartReader());
    EXPECT_EQ(errors.host->only().number, 6);
    EXPECT_EQ(errors.host->only().kind, 0);
    EXPECT_EQ(errors.host->only().location, "basScantron.DownloadFormST");
}

TEST_F(ScanMark, PageModeFieldRefusalsCarryTheirOwnPunctuation)
{
    form(reader, {5, 6}, {4, 4}, {3, 3}, {2, 2});
    reader.Duplex(true);
    reader.DuplexForm(true);
    const std::string head =
        "An error occurred trying to download the form definition to the Scantron scanner";
    const std::pair<const char*, std::string> cases[] = {
        {"FRM=DK 1 1 1 6", head + ".  Invalid sheet definition.\r\n\r\nSheet: 2\r\nSide: 1"},
        {"FRM=DK 2", head + ".  Invalid sheet definition\r\n\r\nSheet: 1\r\nSide: 2"},
        {"FRM=LS", head + " while issuing the end of form command."},
    };
    for (const auto& [command, message] : cases) {
        SCOPED_TRACE(command);
        scanner().rejectCommand(command);
        EXPECT_FALSE(reader.StartReader());
        EXPECT_EQ(errors.host->only().description, message);
        // Clear the cancel so that the closing reset is answered before the port closes.
        reset();
        reader.EndReader();
    }
}

// Status: 12 characters; marks: 48 per row.
// A status condition reported while a one-cell sheet waits: nothing is read.
FaultCase status(const char* name, Sim::StatusFault fault, std::string title, std::string message,
                 std::string location = "basScantron.CheckStatusST")
{
    FaultCase c(name, zebReaderTypeScantronScanMark2000, nullptr, Step::Read, 2, std::move(title),
                std::move(message), std::move(location), "...<ESC>QSTS<CR>");
    c.arrange = [fault](SimulatedReader& s) {
        form(s.reader, {1}, {1}), s.load(patternSheet(1, 1)), sm(s).statusFault(fault);
    };
    c.check = [](SimulatedReader& s) { EXPECT_EQ(sm(s).sheetsRead(), 0); };
    return c;
}

const FaultCase faults[] = {
    {"EmptyHopper", zebReaderTypeScantronScanMark2000, [](SimulatedReader& s) { form(s.reader, {2}, {2}); },
     Step::Read, 0, "", "", "", "...<ESC>FRM=LS<CR><ESC>QSTS<CR>"},
    status("JamBeforeDoubleFeed", Sim::StatusFault::JamAndDoubleFeed, "Paper Jam",
           "The Scantron scanner reports a paper jam. Please clear the jam and try again."),
    status("DoubleFeed", Sim::StatusFault::DoubleFeed, "Double Feed",
           "The Scantron scanner reports a double feed. Please rescan the page."),
    status("CommandError", Sim::StatusFault::CommandError, "Command Error",
           "Your Scantron scanner reported a command error. Error #50"),
    status(
        "TimingLine", Sim::StatusFault::TimingLine, "Initialize Error",
        "The Scantron scanner reported a timing line error. Make sure that the form corresponds to the open "
        "template and that it was not skewed when scanning. Please rescan.",
        "basScantron.heckStatusST"),
    {"ResetUnanswered", zebReaderTypeScantronScanMark2000,
     [](SimulatedReader& s) { s.peer().setSilent(true); }, Step::Start, 2, "No Response",
     "There was no response from the Scantron scanner. Could not initialize!", "basScantron.ResetReaderST",
     "<ESC>SRST<CR>"}, // no download after a failed reset
};
INSTANTIATE_TEST_SUITE_P(ScanMark, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

const ReadCase reads[] = {
    {"ScanMarkDuplexPage", zebReaderTypeScantronScanMark5500,
     [](SimulatedReader& s) {
         s.reader.Duplex(true);
         s.reader.DuplexForm(true);
         form(s.reader, {4}, {6}, {3}, {5});
     },
     patternSheet(4, 6, 3, 5), 4, 6, 3, 5, -1, -1,
     "<ESC>QSTS<CR><ESC>READ 5 Y<CR><ESC>QSTS<CR>"}, // no rejecter
    {"The8400RawBytesWithRejecter", zebReaderTypeScantron8400,
     [](SimulatedReader& s) {
         s.reader.Rejecter(true);
         form(s.reader, {2}, {3});
     },
     patternSheet(2, 3), 2, 3, 0, 0, -1, -1, "<ESC>QSTS<CR><ESC>READ 5 Y E<CR><ESC>QSTS<CR>"},
};
INSTANTIATE_TEST_SUITE_P(ScanMark, FamilyRead, ::testing::ValuesIn(reads), caseName<ReadCase>);

TEST_F(ScanMark, ACRAfterTheStatusReplyNeitherEndsTheMarkDataNorBlocksTheReject)
{
    form(reader, {3}, {4});
    reader.Rejecter(true);
    scanner().statusTrailer("\r");
    load(patternSheet(3, 4));
    load(patternSheet(3, 4));
    ASSERT_TRUE(reader.StartReader());
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(reader.ReadPage()) << "the next sheet starts clean";
        EXPECT_EQ(reader.Side1Array()(3, 4), strength(1, 3, 4));
        bool reject = true;
        EXPECT_TRUE(basScantron::RejectPageST(reader, reject));
    }
    EXPECT_EQ(scanner().ejections(), "CC");
    EXPECT_EQ(scanner().sheetsRead(), 2);
    EXPECT_TRUE(quiet());
}

TEST_F(ScanMark, RejectPrintsOffAndGoesToTheSelectStackerAndTheBatchEndAccepts)
{
    form(reader, {2}, {2});
    reader.Rejecter(true);
    reader.SleepTime(1);
    load(patternSheet(2, 2));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    mark();
    reader.RejectPage();
    EXPECT_EQ(sent(), "<ESC>PRN$ 1 N <CR><ESC>EJCT C<CR>");
    bool reject = true;
    EXPECT_TRUE(basScantron::RejectPageST(reader, reject));
    reject = false;
    EXPECT_FALSE(basScantron::RejectPageST(reader, reject)) << "an accept answers False even when it worked";
    sync();
    EXPECT_EQ(scanner().ejections(), "CCA");
    EXPECT_TRUE(quiet());

    reader.EndReader();
    reader.ReaderType(zebReaderTypeScantronScanMark2250);
    reader.Rejecter(false);
    attach({patternSheet(2, 2), patternSheet(2, 2)});
    int32_t count = 0;
    ASSERT_TRUE(reader.ReadBatch(false, 2, count));
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(sent().ends_with("<ESC>EJCT A <CR><ESC>SRST<CR>"));
    EXPECT_EQ(scanner().commands().back(), "SRST");
    EXPECT_EQ(scanner().ejections(), "A");
}

TEST_F(ScanMark, ImprintTextIsCutTo125CharactersAndARefusalIsFalse)
{
    form(reader, {1}, {1});
    ASSERT_TRUE(reader.StartReader());
    reader.Printer()->Distance(4);
    reader.Printer()->Buffer1(std::string(120, 'a') + "bcdef");
    EXPECT_TRUE(basScantron::PrintST(reader));
    EXPECT_EQ(scanner().printed(), Strings{"    " + std::string(120, 'a') + "b"});
    scanner().rejectCommand("PRN$");
    EXPECT_FALSE(basScantron::PrintST(reader)) << "a reply opening with anything but CR is a refusal";
}

TEST(ScanMarkPortClosed, ResetSucceedsWithoutSendingAnything)
{
    HostScope errors;
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeScantronScanMark2000);
    EXPECT_TRUE(basScantron::ResetReaderST(reader));
    EXPECT_TRUE(errors.host->reports.empty());
}

} // namespace
} // namespace zebreader81::test
