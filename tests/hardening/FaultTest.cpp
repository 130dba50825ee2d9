// Faults on the line, family by family: each read fails with its report (or quietly, where a
// cancel or the scanner's answer calls for none), within the time-out, and the reader reads the
// next sheet correctly after EndReader and StartReader.
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "support/SimulatedReader.h"

#include <algorithm>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Check = std::function<void(SimulatedReader&)>;

constexpr auto opModel = zebReaderTypeNCSOpScan2, smModel = zebReaderTypeScantronScanMark2000,
               pdModel = zebReaderTypePDIVMR138, ezModel = zebReaderTypeNCSEZData,
               ctModel = zebReaderTypeChatsworthOMR1100;

// A single-sided sheet of rows x cols cells; `strength(row, col)` (both from 1) gives each cell.
sim::Sheet sheetOf(int rows, int cols, const std::function<int(int, int)>& strength)
{
    sim::Sheet s;
    s.side1.assign(static_cast<std::size_t>(rows), std::vector<int>(static_cast<std::size_t>(cols)));
    for (int r = 1; r <= rows; ++r)
        for (int c = 1; c <= cols; ++c)
            s.side1[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)] = strength(r, c);
    return s;
}

// OpScan: 48 columns of strengths and a barcode; the card readers: a mark where (r + c) % 3 is 0
// (PDI: (r + 2c) % 5); ScanMark: 10 x 20 strengths (r + 2c + seed) % 13.
sim::Sheet opscan(int rows, int seed)
{
    auto s = sheetOf(rows, 48, [seed](int r, int c) { return ((r - 1) * 3 + (c - 1) + seed) % 16; });
    s.barcodes = {"42"};
    return s;
}
bool cardMark(int r, int c) { return (r + c) % 3 == 0; }
bool pdiMark(int r, int c) { return (r + 2 * c) % 5 == 0; }
sim::Sheet cards(int rows, bool (*marked)(int, int) = cardMark)
{
    return sheetOf(rows, 12, [marked](int r, int c) { return marked(r, c) ? 9 : 0; });
}
sim::Sheet scanmark(int seed) { return patternSheet(10, 20, 0, 0, seed - 5); }
// The ScanMark reads a page form of 10 x 20.
void pageForm(SimulatedReader& s) { form(s.reader, {10}, {20}, {0}, {0}); }

const std::string enable = std::string("\x12\x1b") + "E" + "\x12" + "E";
constexpr std::size_t scanmarkStatus = 12, pdiStatus = 3;

auto& op(SimulatedReader& s) { return s.scanner<sim::OpScanSimulator>(); }
auto& sm(SimulatedReader& s) { return s.scanner<sim::ScanMarkSimulator>(); }
auto& pd(SimulatedReader& s) { return s.scanner<sim::PdiSimulator>(); }
auto& ez(SimulatedReader& s) { return s.scanner<sim::EZDataSimulator>(); }
auto& ct(SimulatedReader& s) { return s.scanner<sim::ChatsworthSimulator>(); }

struct Good {
    sim::Sheet sheet;
    int rows, cols, mark;
};
// A sheet each family reads whole, the bounds of its array and what a mark reads as.
Good good(zebReaderType model)
{
    switch (model) {
    case opModel: return {opscan(30, 5), 150, 48, -1};
    case smModel: return {scanmark(3), 10, 20, -1};
    case pdModel: return {cards(30, pdiMark), 500, 14, 241};
    case ezModel: return {cards(25), 150, 12, 6};
    default: return {cards(25), 126, 12, 6};
    }
}

void expectGoodSheet(SimulatedReader& s)
{
    const auto model = s.reader.ReaderType();
    const auto g = good(model);
    auto expected = expectedSide(g.sheet, 1, g.rows, g.cols, g.mark);
    for (int r = 1; model == opModel && r <= g.rows; ++r)
        expected(r, 48) = 0; // the last column carries no mark
    EXPECT_EQ(s.events->side1.back(), expected);
    if (model != smModel) {
        EXPECT_EQ(s.reader.Side1TimingMarks(), static_cast<int>(g.sheet.side1.size()));
    }
    if (model == opModel) {
        EXPECT_EQ(s.events->barcodes.back()(1), "42");
    }
}

// After the fault: EndReader and StartReader (on a new line after a hang-up), then a good
// sheet reads whole.
Check recovers(bool newLine = false, Check first = nullptr)
{
    return [=](SimulatedReader& s) {
        if (first)
            first(s);
        const auto model = s.reader.ReaderType();
        s.peer().clearFaults();
        if (model == ezModel)
            ez(s).clearOverrides();
        if (model == ctModel) {
            ct(s).clearOverrides(), ct(s).clearJam();
            ct(s).waitIdle(5s);
        }
        s.reset();
        s.reader.EndReader();
        if (newLine)
            s.attach();
        s.errors.host->reports.clear();
        const auto before = s.events->sheets;
        ASSERT_TRUE(s.reader.StartReader());
        s.load(good(model).sheet);
        ASSERT_TRUE(s.reader.ReadPage());
        EXPECT_TRUE(s.quiet());
        ASSERT_EQ(s.events->sheets, before + 1);
        expectGoodSheet(s);
        // A card left half read in the transport goes out the front at the next start.
        if (model == ctModel) {
            EXPECT_EQ(ct(s).dispositions().back(), "ER");
        } else if (const bool ended = s.reader.EndReader(); model != pdModel) {
            EXPECT_TRUE(ended);
        }
    };
}

// A read that fails: `fault` set once the reader has started.
FaultCase read(const char* name, zebReaderType model, Check fault, int32_t kind = 0, std::string title = {},
               std::string message = {}, std::string location = {}, Check check = recovers())
{
    FaultCase c(name, model, model == smModel ? pageForm : Check{}, Step::Read, kind, std::move(title),
                std::move(message), std::move(location), {}, std::move(check));
    c.started = std::move(fault);
    return c;
}
// The run-time error `n` from the read.
FaultCase error(const char* name, zebReaderType model, Check fault, int32_t n, std::string message,
                std::string location, bool newLine = false)
{
    return read(name, model, std::move(fault), 0, "", std::move(message), std::move(location),
                recovers(newLine, [n](SimulatedReader& s) { EXPECT_EQ(s.errors.host->only().number, n); }));
}
// A start that fails: `fault` set before it.
FaultCase start(const char* name, zebReaderType model, Check fault, std::string title, std::string message,
                std::string location)
{
    auto c = read(name, model, nullptr, 2, std::move(title), std::move(message), std::move(location));
    c.step = Step::Start;
    c.arrange = [fault, form = c.arrange](SimulatedReader& s) {
        if (form)
            form(s);
        fault(s);
    };
    return c;
}
// Sets CancelScan a moment after the driver has sent `more` bytes, so that it is waiting.
void cancelAfterSent(SimulatedReader& s, std::size_t more)
{
    s.peer().whenReceived(
        s.peer().receivedCount() + more, [&s] { s.reader.CancelScan(true); }, 150ms);
}
FaultCase quietCancel(const char* name, zebReaderType model, std::size_t sent, Check fault = nullptr)
{
    return read(name, model, [=](SimulatedReader& s) {
        if (fault)
            fault(s);
        cancelAfterSent(s, sent);
    });
}
Check stall(std::size_t after)
{
    return [after](SimulatedReader& s) { s.peer().stallAfter(after); };
}

const std::string noResponse = "No Response";
const std::string scantronNoAnswer = "There was no response from the Scantron scanner. Could not initialize!";
const std::string opAt = "basNCS.ReadPageNCS", smAt = "basScantron.ReadPageST",
                  pdAt = "basPeripheralDynamics.ReadPagePD",
                  pdStatusAt = "basPeripheralDynamics.CheckStatusPD";
const std::string ezTitle = "EZData Scanner Error", ezAt = "basNCSEZData.ReadPageNCSEZ";
const std::string ctTitle = "Chatsworth Scanner Error", ctAt = "basChatsworth.ReadPageCT";
std::string ezEnable(const std::string& what)
{
    return "EZData Scanner - Unexpected data returned from scanner (" + what;
}
std::string ctSays(const std::string& what) { return "Chatsworth Scanner - " + what; }
const std::string subscript = "Subscript out of range";

const FaultCase faults[] = {
    // --- OpScan
    read(
        "OpScanGarbageInsteadOfAPage", opModel, // three stray values: 51 where 48 belong
        [](SimulatedReader& s) { op(s).feedRawOnce(std::string("\x7f\xfe#a!!a\r", 8)); }, 2,
        "Invalid Number of Bytes",
        "The scanner reported an invalid number of bytes on side 1\r\n\r\nInvalid number of bytes: "
        "51\r\nLine "
        "number: 0",
        opAt),
    read(
        "OpScanStatusReplyCutShort", opModel,
        [](SimulatedReader& s) {
            op(s).addSheet(opscan(10, 3));
            s.peer().stallAfter(sim::OpScanSimulator::encodeSheet(opscan(10, 3)).size() + 3);
        },
        2, noResponse, "There was no response from the scanner while checking status.",
        "basNCS.CheckStatusNCS"),
    read("OpScanNothingAfterTheStart", opModel, nullptr, 2, noResponse,
         "There was no response from the scanner while scanning a page.", opAt),
    read(
        "OpScanPageStopsInTheMiddle", opModel,
        [](SimulatedReader& s) {
            op(s).addSheet(opscan(20, 2));
            op(s).stallNextSheetAfter(100);
        },
        2, noResponse, "There was no response from the scanner while reading data.", opAt),
    // A babbling scanner once kept the drain before the first command going for ever.
    error(
        "OpScanLineThatNeverFallsQuiet", opModel, [](SimulatedReader& s) { s.peer().babble("5"); }, 9,
        subscript, opAt),
    // --- ScanMark
    // The line goes dead in mid-sheet.
    error(
        "ScanMarkHangUpInMidTransfer", smModel,
        [](SimulatedReader& s) {
            sm(s).addSheet(scanmark(1));
            s.peer().stallAfter(scanmarkStatus + 100);
            s.peer().whenSent(
                s.peer().sentCount() + scanmarkStatus + 100, [p = &s.peer()] { p->hangUp(); }, 50ms);
        },
        8020, "Error reading comm device", smAt, true),
    start(
        "ScanMarkGarbageForTheResetAnswer", smModel, [](SimulatedReader& s) { s.peer().garble(1, 1); },
        "Reset Error",
        "An error occurred trying to reset the Scantron scanner.  Please power the scanner off and on and "
        "retry "
        "the operation.",
        "basScantron.ResetReaderST"),
    read(
        "ScanMarkStallInTheMarks", smModel,
        [](SimulatedReader& s) {
            sm(s).addSheet(scanmark(1));
            s.peer().stallAfter(scanmarkStatus + 100);
        },
        2, "Read Error",
        "There was no response from the Scantron scanner. The scanner timed out waiting to receive the "
        "scanned "
        "data.",
        smAt),
    read("ScanMarkStatusReplyCutShort", smModel, stall(scanmarkStatus - 1), 2, "Initialize Error",
         scantronNoAnswer, "basScantron.CheckStatusST"),
    [] {
        auto c = quietCancel("ScanMarkCancelWhileHandFeeding", smModel, 1);
        c.arrange = [](SimulatedReader& s) {
            pageForm(s);
            s.reader.Feeder(false);
        };
        c.check = recovers(false, [](SimulatedReader& s) { s.reader.Feeder(true); });
        return c;
    }(),
    quietCancel("ScanMarkCancelAwaitingTheStatus", smModel, 6,
                [](SimulatedReader& s) { s.peer().setSilent(true); }), // the status query, unanswered
    quietCancel("ScanMarkCancelAwaitingTheMarks", smModel, 16, // the status query (6 bytes) and the read (10)
                [](SimulatedReader& s) {
                    sm(s).addSheet(scanmark(1));
                    s.peer().stallAfter(scanmarkStatus);
                }),
    // --- PDI
    read(
        "PdiGarbageForTheStatus", pdModel, // its second character (1) reads as the back sensor
        [](SimulatedReader& s) { s.peer().garble(pdiStatus, 1); }, 2, "Status Error",
        "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is improperly "
        "closed.  Please clear any form from inside the scanner and try again.",
        pdStatusAt),
    start(
        "PdiGarbageForTheThreshold", pdModel, [](SimulatedReader& s) { pd(s).setThresholdAnswer("x?"); },
        "Threshold Initialization Error",
        "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.",
        "basPeripheralDynamics.SetRecThresholdPD"),
    error("PdiStatusReplyCutShort", pdModel, stall(1), 5, "Invalid procedure call or argument", pdStatusAt),
    error(
        "PdiRowsBeyondTheArrayEnd", pdModel, [](SimulatedReader& s) { pd(s).addSheet(cards(520, pdiMark)); },
        9, subscript, pdAt),
    read(
        "PdiLineThatNeverFallsQuiet", pdModel, [](SimulatedReader& s) { s.peer().babble("@"); }, 2,
        "Status Error",
        "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry.",
        pdStatusAt),
    // A stall in the sheet data is ended by the cancel, that wait's only bound.
    quietCancel("PdiCancelWhileASheetStalls", pdModel, 2,
                [](SimulatedReader& s) {
                    pd(s).addSheet(cards(40, pdiMark));
                    s.peer().stallAfter(pdiStatus + 41);
                }),
    // --- EZData
    read(
        "EZDataGarbageForTheEnableAnswer", ezModel,
        [](SimulatedReader& s) { ez(s).overrideAnswer("E", "x#"); }, 2, ezTitle, ezEnable("ENABLE1)."), ezAt),
    read(
        "EZDataGarbageInTheSheet", ezModel,
        [](SimulatedReader& s) {
            ez(s).overrideAnswer("E", "G\r");
            s.peer().whenSent(
                s.peer().sentCount() + 2, [p = &s.peer()] { p->inject("\x21\x60\x85"); }, 700ms);
        },
        2, ezTitle, ezEnable("ENABLE2): \x21\x60\x85"), ezAt),
    error(
        "EZDataRowsBeyondTheArrayEnd", ezModel, [](SimulatedReader& s) { ez(s).addSheet(cards(160)); }, 9,
        subscript, ezAt),
    // Only the cancel ends the wait for the sheet.
    quietCancel("EZDataCancelWhileTheSheetIsAwaited", ezModel, enable.size()),
    // --- Chatsworth
    read(
        "ChatsworthJamInMidCardIsToldByTheStatus", ctModel,
        [](SimulatedReader& s) {
            ct(s).jamAfterRows(7);
            ct(s).addSheet(cards(40));
        },
        2, ctTitle, ctSays("The scanner reports a jam.  Clear the transport and retry."), ctAt,
        recovers(false, [](SimulatedReader& s) { EXPECT_EQ(ct(s).words().end()[-2], "S"); })),
    read(
        "ChatsworthSilentInMidCard", ctModel, // the enable answer and nine rows
        [](SimulatedReader& s) {
            ct(s).addSheet(cards(40));
            s.peer().stallAfter(2 + 2 * 9);
        },
        2, ctTitle, ctSays("No answer from the scanner to the status command."), ctAt),
    read(
        "ChatsworthCardThatStopsWithoutAJam", ctModel,
        [](SimulatedReader& s) {
            s.peer().whenSent(
                s.peer().sentCount() + 2, [p = &s.peer()] { p->inject(std::string(19, '!')); }, 50ms);
        },
        2, ctTitle, ctSays("The card data stopped after row 9."), ctAt),
    [] {
        auto c = read(
            "ChatsworthPowerCycleLosesTheConversion", ctModel,
            [](SimulatedReader& s) {
                ct(s).powerCycle();
                ct(s).addSheet(cards(10));
            },
            2, ctTitle, ctSays("No card was read within the time-out."), ctAt,
            [](SimulatedReader& s) {
                EXPECT_FALSE(ct(s).converting());
                s.reader.Feeder(false);
                recovers()(s);
                EXPECT_EQ(ct(s).dispositions(), (std::vector<std::string>{"EF", "ER"}))
                    << "the card read without data went out the front";
            });
        c.arrange = [](SimulatedReader& s) { s.reader.Feeder(true); };
        return c;
    }(),
    // A cancelled read leaves the card moving; the next read's commands go unanswered.
    read(
        "ChatsworthCommandWhileTheCardMoves", ctModel,
        [](SimulatedReader& s) {
            ct(s).setFeedDelay(2500ms);
            ct(s).addSheet(cards(10));
            cancelAfterSent(s, enable.size());
            EXPECT_FALSE(s.reader.ReadPage());
            EXPECT_TRUE(s.quiet()) << "a cancel is quiet";
            s.reader.CancelScan(false);
        },
        2, ctTitle, ctSays("No answer from the scanner to the enable command."), ctAt,
        recovers(false,
                 [](SimulatedReader& s) {
                     const auto words = ct(s).words();
                     const auto enabled = std::find(words.begin(), words.end(), "E");
                     ASSERT_GE(words.end() - enabled, 3);
                     EXPECT_EQ(std::vector<std::string>(enabled, enabled + 3),
                               (std::vector<std::string>{"E", "ignored D", "ignored E"}));
                     ct(s).setFeedDelay(300ms);
                 })),
};
INSTANTIATE_TEST_SUITE_P(Line, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

// Forty rows more than the form holds before the CR: the form's rows are kept. The flood
// starts with the last character of the last row, so the driver is still inside the side.
TEST(ScanMarkFault, BytesBeyondTheFormAreDropped)
{
    SimulatedReader s(smModel, [](clsZEBReader&) {});
    pageForm(s);
    ASSERT_TRUE(s.reader.StartReader());
    sm(s).addSheet(scanmark(3));
    const std::size_t marks = scanmarkStatus + 10 * 48 - 1;
    s.peer().stallAfter(marks);
    s.peer().whenSent(
        s.peer().sentCount() + marks,
        [p = &s.peer()] {
            p->inject(std::string(40 * 48 + 1, '7') + "\r");
            p->clearFaults();
        },
        50ms);
    EXPECT_TRUE(s.reader.ReadPage());
    EXPECT_TRUE(s.quiet());
    ASSERT_EQ(s.events->sheets, 1);
    expectGoodSheet(s);
}

} // namespace
} // namespace zebreader81::test
