// Faults on the line, family by family, on a memory line and a virtual clock: each read fails
// with its report (or quietly, where a cancel or the scanner's answer calls for none), within
// the time-out, and the reader reads the next sheet correctly after EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "sim/ncs/OpScanSimulator.h"
#include "sim/pdi/PdiSimulator.h"
#include "sim/scantron/ScanMarkSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

// OpScan: 48 columns of strengths and a barcode; the card readers: a mark where (r + c) % 3 is 0
// (PDI: (r + 2c) % 5); ScanMark: 10 x 20 strengths.
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
int scanmarkStrength(int r, int c, int seed) { return (r + 2 * c + seed) % 13; }
sim::Sheet scanmark(int seed)
{
    return sheetOf(10, 20, [seed](int r, int c) { return scanmarkStrength(r, c, seed); });
}
SafeArray<int16_t> perSheet(int16_t value)
{
    auto a = SafeArray<int16_t>::vector(0, 1);
    a(1) = value;
    return a;
}

const std::string enable = std::string("\x12\x1b") + "E" + "\x12" + "E";
constexpr std::size_t scanmarkStatus = 12, pdiStatus = 3;

enum class Family { OpScan, ScanMark, Pdi, EZData, Chatsworth };

struct Faults : ::testing::Test {
    Family family{};
    sim::MemoryLines lines;
    HostScope errors;
    std::unique_ptr<sim::Peer> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();
    bool guardFired = false;

    template <class T> T& sim() { return static_cast<T&>(*scanner); }

    void setUp(Family f)
    {
        family = f;
        plugIn();
        reader.Port(11);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.Advise(events);
        switch (f) {
        case Family::OpScan:
            reader.ReaderType(zebReaderTypeNCSOpScan2);
            reader.Feeder(true);
            break;
        case Family::ScanMark:
            reader.ReaderType(zebReaderTypeScantronScanMark2000);
            reader.DataBits(zebReaderDataBits8);
            reader.Feeder(true);
            reader.RecognitionMode(zebRecognitionTypePage);
            reader.Side1Rows(perSheet(10));
            reader.Side1Cols(perSheet(20));
            reader.Side2Rows(perSheet(0));
            reader.Side2Cols(perSheet(0));
            break;
        case Family::Pdi:
            reader.ReaderType(zebReaderTypePDIVMR138);
            reader.BaudRate(zebReaderBaudRate9600);
            reader.DataBits(zebReaderDataBits8);
            reader.SleepTime(1);
            reader.RecognitionThreshold(240);
            break;
        case Family::EZData:
            reader.ReaderType(zebReaderTypeNCSEZData);
            reader.BaudRate(zebReaderBaudRate9600);
            reader.Parity("N");
            reader.DataBits(zebReaderDataBits8);
            reader.StopBits(1);
            reader.RecognitionThreshold(5);
            break;
        case Family::Chatsworth:
            reader.ReaderType(zebReaderTypeChatsworthOMR1100);
            reader.LoadDefaults(zebReaderTypeChatsworthOMR1100);
            reader.Port(11);
            reader.TimeOut(1);
            reader.RecognitionThreshold(5);
            break;
        }
    }

    // A scanner on a fresh line (after a hang-up the old one is gone).
    void plugIn()
    {
        switch (family) {
        case Family::OpScan: scanner = std::make_unique<sim::OpScanSimulator>(); break;
        case Family::ScanMark:
            scanner = std::make_unique<sim::ScanMarkSimulator>(zebReaderTypeScantronScanMark2000);
            break;
        case Family::Pdi: scanner = std::make_unique<sim::PdiSimulator>(); break;
        case Family::EZData:
            scanner = std::make_unique<sim::EZDataSimulator>();
            sim<sim::EZDataSimulator>().setThresholdCode("70");
            // The driver looks for the enable answer 500 ms after the enable; the sheet follows.
            sim<sim::EZDataSimulator>().setFeedDelay(700ms);
            break;
        case Family::Chatsworth:
            scanner = std::make_unique<sim::ChatsworthSimulator>();
            sim<sim::ChatsworthSimulator>().setFeedDelay(300ms);
            break;
        }
        sim::mapPort(11, scanner->path());
    }

    void start()
    {
        // The first "+" reads the value one below where the scanner stood.
        if (family == Family::Pdi)
            sim<sim::PdiSimulator>().setThreshold(reader.RecognitionThreshold() + 1);
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(errors.host->reports.empty());
    }

    // One read, ended by a hang-up should it outlast every time-out by far.
    bool guardedRead()
    {
        auto armed = std::make_shared<bool>(true);
        scanner->whenReceived(
            0,
            [this, armed, peer = scanner.get()] {
                if (!*armed)
                    return;
                guardFired = true;
                reader.CancelScan(true);
                peer->hangUp();
            },
            60s);
        const bool ok = reader.ReadPage();
        *armed = false;
        EXPECT_FALSE(guardFired) << "the read hung";
        return ok;
    }

    void failingRead()
    {
        EXPECT_FALSE(guardedRead());
        EXPECT_TRUE(reader.CancelScan()) << "a failed read stops the batch";
        EXPECT_EQ(events->sheets, 0);
    }

    // Sets CancelScan a moment after the driver has sent `more` bytes, so that it is waiting.
    void cancelAfterSent(std::size_t more)
    {
        scanner->whenReceived(
            scanner->receivedCount() + more, [this] { reader.CancelScan(true); }, 150ms);
    }
    void hangUpAfterReplies(std::size_t more)
    {
        scanner->whenSent(
            scanner->sentCount() + more, [p = scanner.get()] { p->hangUp(); }, 50ms);
    }

    void addGoodSheet()
    {
        switch (family) {
        case Family::OpScan: sim<sim::OpScanSimulator>().addSheet(opscan(30, 5)); break;
        case Family::ScanMark: sim<sim::ScanMarkSimulator>().addSheet(scanmark(3)); break;
        case Family::Pdi: sim<sim::PdiSimulator>().addSheet(cards(30, pdiMark)); break;
        case Family::EZData: sim<sim::EZDataSimulator>().addSheet(cards(25)); break;
        case Family::Chatsworth: sim<sim::ChatsworthSimulator>().addSheet(cards(25)); break;
        }
    }

    void expectGoodSheet()
    {
        const auto& m = events->side1.back();
        auto cardsRead = [&](int rows, bool (*marked)(int, int), int16_t mark) {
            for (int r : {1, 2, rows / 2, rows})
                for (int c = 1; c <= 12; ++c)
                    EXPECT_EQ(m(r, c), marked(r, c) ? mark : 0) << r << "," << c;
            EXPECT_EQ(m(rows + 1, 2), 0);
            EXPECT_EQ(reader.Side1TimingMarks(), rows);
        };
        switch (family) {
        case Family::OpScan:
            EXPECT_EQ(m(1, 1), 5);
            EXPECT_EQ(m(30, 47), (29 * 3 + 46 + 5) % 16);
            EXPECT_EQ(m(31, 1), 0);
            EXPECT_EQ(events->barcodes.back()(1), "42");
            EXPECT_EQ(reader.Side1TimingMarks(), 30);
            break;
        case Family::ScanMark:
            for (auto [r, c] : {std::pair{1, 1}, {10, 20}, {4, 7}})
                EXPECT_EQ(m(r, c), scanmarkStrength(r, c, 3));
            break;
        case Family::Pdi: cardsRead(30, pdiMark, 241); break;
        case Family::EZData:
        case Family::Chatsworth: cardsRead(25, cardMark, 6); break;
        }
    }

    // EndReader and StartReader, then a good sheet reads whole.
    void expectRecovery(bool newLine)
    {
        scanner->clearFaults();
        if (family == Family::EZData)
            sim<sim::EZDataSimulator>().clearOverrides();
        if (family == Family::Chatsworth) {
            auto& card = sim<sim::ChatsworthSimulator>();
            card.clearOverrides();
            card.clearJam();
            card.waitIdle(5s);
        }
        reader.CancelScan(false);
        reader.EndReader();
        if (newLine)
            plugIn();
        errors.host->reports.clear();
        const auto before = events->sheets;
        start();
        addGoodSheet();
        ASSERT_TRUE(guardedRead());
        EXPECT_TRUE(errors.host->reports.empty());
        ASSERT_EQ(events->sheets, before + 1);
        expectGoodSheet();
        // A card left half read in the transport goes out the front at the next start.
        if (family == Family::Chatsworth) {
            EXPECT_EQ(sim<sim::ChatsworthSimulator>().dispositions().back(), "ER");
        } else if (const bool ended = reader.EndReader(); family != Family::Pdi) {
            EXPECT_TRUE(ended);
        }
    }
};

// What the failing read reports: nothing, something, a run-time error by number, or a message.
struct Expect {
    enum { Quiet, Any, Number, Message } how = Quiet;
    int32_t number = 0;
    std::string title, message, location;
};
Expect quiet() { return {}; }
Expect any() { return {Expect::Any, 0, {}, {}, {}}; }
Expect error(int32_t number, std::string location) { return {Expect::Number, number, {}, {}, location}; }
Expect message(std::string title, std::string text, std::string location)
{
    return {Expect::Message, 0, std::move(title), std::move(text), std::move(location)};
}

struct Case {
    Family family;
    const char* name;
    std::function<void(Faults&)> act; // sets up the fault and reads
    Expect expect;
    bool newLine = false; // a hang-up: the recovery needs a new line
    std::function<void(Faults&)> after = nullptr;
};

const std::string noResponse = "No Response";
const std::string scantronNoAnswer = "There was no response from the Scantron scanner. Could not initialize!";
const std::string pdiStatus_ = "Status Error";
const std::string ezTitle = "EZData Scanner Error", ezAt = "basNCSEZData.ReadPageNCSEZ";
const std::string ctTitle = "Chatsworth Scanner Error", ctAt = "basChatsworth.ReadPageCT";
std::string ezEnable(const std::string& what)
{
    return "EZData Scanner - Unexpected data returned from scanner (" + what;
}

std::vector<Case> cases()
{
    using F = Faults;
    // Starts the reader, sets up the fault, and reads once.
    auto read = [](std::function<void(F&)> fault) {
        return [fault](F& f) {
            f.start();
            fault(f);
            f.failingRead();
        };
    };
    auto op = [](F& f) -> sim::OpScanSimulator& { return f.sim<sim::OpScanSimulator>(); };
    auto sm = [](F& f) -> sim::ScanMarkSimulator& { return f.sim<sim::ScanMarkSimulator>(); };
    auto pd = [](F& f) -> sim::PdiSimulator& { return f.sim<sim::PdiSimulator>(); };
    auto ez = [](F& f) -> sim::EZDataSimulator& { return f.sim<sim::EZDataSimulator>(); };
    auto ct = [](F& f) -> sim::ChatsworthSimulator& { return f.sim<sim::ChatsworthSimulator>(); };
    return {
        // --- OpScan
        {Family::OpScan, "HangUpInMidPage", read([=](F& f) {
             op(f).addSheet(opscan(40, 1));
             op(f).stallNextSheetAfter(300);
             f.hangUpAfterReplies(300);
         }),
         error(8020, "basNCS.ReadPageNCS"), true},
        {Family::OpScan, "GarbageInsteadOfAPage", // three stray values: 51 where 48 belong
         read([=](F& f) { op(f).feedRawOnce(std::string("\x7f\xfe#a!!a\r", 8)); }),
         message("Invalid Number of Bytes",
                 "The scanner reported an invalid number of bytes on side 1\r\n\r\n"
                 "Invalid number of bytes: 51\r\nLine number: 0",
                 "basNCS.ReadPageNCS")},
        {Family::OpScan, "NothingAfterTheStart", read([](F&) {}),
         message(noResponse, "There was no response from the scanner while scanning a page.",
                 "basNCS.ReadPageNCS")},
        {Family::OpScan, "PageStopsInTheMiddle", read([=](F& f) {
             op(f).addSheet(opscan(20, 2));
             op(f).stallNextSheetAfter(100);
         }),
         message(noResponse, "There was no response from the scanner while reading data.",
                 "basNCS.ReadPageNCS")},
        {Family::OpScan, "StatusReplyCutShort", read([=](F& f) {
             op(f).addSheet(opscan(10, 3));
             op(f).stallAfter(sim::OpScanSimulator::encodeSheet(opscan(10, 3)).size() + 3);
         }),
         message(noResponse, "There was no response from the scanner while checking status.",
                 "basNCS.CheckStatusNCS")},
        {Family::OpScan, "RowsBeyondTheArrayEnd", read([=](F& f) { op(f).addSheet(opscan(170, 4)); }),
         error(9, "basNCS.ReadPageNCS")},
        // A babbling scanner once kept the drain before the first command going for ever.
        {Family::OpScan, "LineThatNeverFallsQuiet", read([=](F& f) { f.scanner->babble("5"); }), any()},
        {Family::OpScan, "CancelWhileWaitingForAHandFedSheet",
         [=](F& f) {
             f.reader.Feeder(false);
             f.start();
             f.cancelAfterSent(1);
             f.failingRead();
             f.reader.Feeder(true);
         },
         quiet()},
        // --- ScanMark
        {Family::ScanMark, "HangUpInMidTransfer", read([=](F& f) {
             sm(f).addSheet(scanmark(1));
             f.scanner->stallAfter(scanmarkStatus + 100);
             f.hangUpAfterReplies(scanmarkStatus + 100);
         }),
         error(8020, "basScantron.ReadPageST"), true},
        // A state character that means nothing fails without a message.
        {Family::ScanMark, "GarbageForTheStatus", read([=](F& f) { f.scanner->garble(scanmarkStatus, 1); }),
         quiet()},
        {Family::ScanMark, "GarbageForTheResetAnswer",
         [=](F& f) {
             f.scanner->garble(1, 1);
             EXPECT_FALSE(f.reader.StartReader());
             f.errors.host->reports.resize(std::min<std::size_t>(f.errors.host->reports.size(), 1));
         },
         message(
             "Reset Error",
             "An error occurred trying to reset the Scantron scanner.  Please power the scanner off and on "
             "and retry the operation.",
             "basScantron.ResetReaderST")},
        {Family::ScanMark, "StallInTheMarks", read([=](F& f) {
             sm(f).addSheet(scanmark(1));
             f.scanner->stallAfter(scanmarkStatus + 100);
         }),
         message(
             "Read Error",
             "There was no response from the Scantron scanner. The scanner timed out waiting to receive the "
             "scanned data.",
             "basScantron.ReadPageST")},
        {Family::ScanMark, "Silence", read([=](F& f) { f.scanner->setSilent(true); }),
         message("Initialize Error", scantronNoAnswer, "basScantron.CheckStatusST")},
        {Family::ScanMark, "StatusReplyCutShort",
         read([=](F& f) { f.scanner->stallAfter(scanmarkStatus - 1); }),
         message("Initialize Error", scantronNoAnswer, "basScantron.CheckStatusST")},
        // Forty rows more than the form holds before the CR: the form's rows are kept. The flood
        // starts with the last character of the last row, so the driver is still inside the side.
        {Family::ScanMark, "BytesBeyondTheFormAreDropped",
         [=](F& f) {
             f.start();
             sm(f).addSheet(scanmark(3));
             const std::size_t marks = scanmarkStatus + 10 * 48 - 1;
             f.scanner->stallAfter(marks);
             f.scanner->whenSent(
                 f.scanner->sentCount() + marks,
                 [p = f.scanner.get()] {
                     p->inject(std::string(40 * 48 + 1, '7') + "\r");
                     p->clearFaults();
                 },
                 50ms);
             EXPECT_TRUE(f.guardedRead());
             ASSERT_EQ(f.events->sheets, 1);
             f.expectGoodSheet();
             f.events->sheets = 0;
         },
         quiet()},
        {Family::ScanMark, "CancelWhileHandFeeding",
         [=](F& f) {
             f.reader.Feeder(false);
             f.start();
             f.cancelAfterSent(1);
             f.failingRead();
             f.reader.Feeder(true);
         },
         quiet()},
        {Family::ScanMark, "CancelAwaitingTheMarks", // the status query (6 bytes) and the read (10)
         read([=](F& f) {
             sm(f).addSheet(scanmark(1));
             f.scanner->stallAfter(scanmarkStatus);
             f.cancelAfterSent(16);
         }),
         quiet()},
        // --- PDI
        {Family::Pdi, "HangUpInMidSheet", // the status, the LF and 40 whole rows
         read([=](F& f) {
             pd(f).addSheet(cards(40, pdiMark));
             f.scanner->stallAfter(pdiStatus + 81);
             f.hangUpAfterReplies(pdiStatus + 81);
         }),
         error(8020, "basPeripheralDynamics.ReadPagePD"), true},
        {Family::Pdi, "GarbageForTheStatus", // its second character (1) reads as the back sensor
         read([=](F& f) { f.scanner->garble(pdiStatus, 1); }),
         message(pdiStatus_,
                 "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is "
                 "improperly closed.  Please clear any form from inside the scanner and try again.",
                 "basPeripheralDynamics.CheckStatusPD")},
        {Family::Pdi, "GarbageForTheThreshold",
         [=](F& f) {
             pd(f).setThreshold(241);
             pd(f).setThresholdAnswer("x?");
             EXPECT_FALSE(f.reader.StartReader());
         },
         message(
             "Threshold Initialization Error",
             "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.",
             "basPeripheralDynamics.SetRecThresholdPD")},
        {Family::Pdi, "Silence", read([=](F& f) { f.scanner->setSilent(true); }),
         message(
             pdiStatus_,
             "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and "
             "powered on.",
             "basPeripheralDynamics.CheckStatusPD")},
        {Family::Pdi, "StatusReplyCutShort", read([=](F& f) { f.scanner->stallAfter(1); }),
         error(5, "basPeripheralDynamics.CheckStatusPD")},
        {Family::Pdi, "RowsBeyondTheArrayEnd", read([=](F& f) { pd(f).addSheet(cards(520, pdiMark)); }),
         error(9, "basPeripheralDynamics.ReadPagePD")},
        {Family::Pdi, "LineThatNeverFallsQuiet", read([=](F& f) { f.scanner->babble("@"); }), any()},
        // A stall in the sheet data is ended by the cancel, that wait's only bound.
        {Family::Pdi, "CancelWhileASheetStalls", read([=](F& f) {
             pd(f).addSheet(cards(40, pdiMark));
             f.scanner->stallAfter(pdiStatus + 41);
             f.cancelAfterSent(2);
         }),
         quiet()},
        {Family::Pdi, "CancelWhileASheetIsAwaited", // "Q" and "8", then nothing comes
         read([=](F& f) { f.cancelAfterSent(2); }), quiet()},
        // --- EZData
        {Family::EZData, "HangUpInMidSheet", // the enable answer and ten bytes of the sheet
         read([=](F& f) {
             ez(f).addSheet(cards(40));
             f.scanner->stallAfter(2 + 10);
             f.hangUpAfterReplies(12);
         }),
         error(8020, ezAt), true},
        {Family::EZData, "GarbageForTheEnableAnswer", read([=](F& f) { ez(f).overrideAnswer("E", "x#"); }),
         message(ezTitle, ezEnable("ENABLE1)."), ezAt)},
        {Family::EZData, "GarbageInTheSheet", read([=](F& f) {
             ez(f).overrideAnswer("E", "G\r");
             f.scanner->whenSent(
                 f.scanner->sentCount() + 2, [p = f.scanner.get()] { p->inject("\x21\x60\x85"); }, 700ms);
         }),
         message(ezTitle, ezEnable("ENABLE2): \x21\x60\x85"), ezAt)},
        {Family::EZData, "Silence", read([=](F& f) { f.scanner->setSilent(true); }),
         message(ezTitle, ezEnable("ENABLE1)."), ezAt)},
        {Family::EZData, "EnableAnswerCutShort", read([=](F& f) { ez(f).overrideAnswer("E", "G"); }),
         message(ezTitle, ezEnable("ENABLE1)."), ezAt)},
        {Family::EZData, "RowsBeyondTheArrayEnd", read([=](F& f) { ez(f).addSheet(cards(160)); }),
         error(9, ezAt)},
        {Family::EZData, "CancelWhileTheSheetIsAwaited", // only the cancel ends that wait
         read([=](F& f) { f.cancelAfterSent(enable.size()); }), quiet()},
        // --- Chatsworth
        {Family::Chatsworth, "HangUpInMidCard", // the enable answer and ten bytes of the card
         read([=](F& f) {
             ct(f).addSheet(cards(40));
             f.scanner->stallAfter(2 + 10);
             f.hangUpAfterReplies(12);
         }),
         error(8020, ctAt), true},
        {Family::Chatsworth, "JamInMidCardIsToldByTheStatus",
         [=](F& f) {
             f.start();
             ct(f).jamAfterRows(7);
             ct(f).addSheet(cards(40));
             f.failingRead();
             EXPECT_EQ(ct(f).words().end()[-2], "S");
         },
         message(ctTitle, "Chatsworth Scanner - The scanner reports a jam.  Clear the transport and retry.",
                 ctAt)},
        {Family::Chatsworth, "SilentInMidCard", // the enable answer and nine rows
         read([=](F& f) {
             ct(f).addSheet(cards(40));
             f.scanner->stallAfter(2 + 2 * 9);
         }),
         message(ctTitle, "Chatsworth Scanner - No answer from the scanner to the status command.", ctAt)},
        {Family::Chatsworth, "CardThatStopsWithoutAJam", read([=](F& f) {
             f.scanner->whenSent(
                 f.scanner->sentCount() + 2, [p = f.scanner.get()] { p->inject(std::string(19, '!')); },
                 50ms);
         }),
         message(ctTitle, "Chatsworth Scanner - The card data stopped after row 9.", ctAt)},
        {Family::Chatsworth, "PowerCycleLosesTheConversion",
         [=](F& f) {
             f.reader.Feeder(true);
             f.start();
             ct(f).powerCycle();
             ct(f).addSheet(cards(10));
             f.failingRead();
             EXPECT_FALSE(ct(f).converting());
             f.reader.Feeder(false);
         },
         message(ctTitle, "Chatsworth Scanner - No card was read within the time-out.", ctAt), false,
         [=](F& f) {
             EXPECT_EQ(ct(f).dispositions(), (std::vector<std::string>{"EF", "ER"}))
                 << "the card read without data went out the front";
         }},
        {Family::Chatsworth, "CommandWhileTheCardMoves",
         [=](F& f) {
             f.start();
             ct(f).setFeedDelay(2500ms);
             ct(f).addSheet(cards(10));
             f.cancelAfterSent(enable.size());
             f.failingRead();
             EXPECT_TRUE(f.errors.host->reports.empty()) << "a cancel is quiet";
             f.reader.CancelScan(false);
             f.failingRead();
             const auto words = ct(f).words();
             const auto enabled = std::find(words.begin(), words.end(), "E");
             ASSERT_GE(words.end() - enabled, 3);
             EXPECT_EQ(std::vector<std::string>(enabled, enabled + 3),
                       (std::vector<std::string>{"E", "ignored D", "ignored E"}));
             ct(f).setFeedDelay(300ms);
         },
         message(ctTitle, "Chatsworth Scanner - No answer from the scanner to the enable command.", ctAt)},
    };
}

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

struct Fault : Faults, ::testing::WithParamInterface<Case> {};

TEST_P(Fault, IsReportedAndTheNextSheetReads)
{
    const Case& c = GetParam();
    setUp(c.family);
    c.act(*this);
    const auto& reports = errors.host->reports;
    switch (c.expect.how) {
    case Expect::Quiet:
        for (const auto& r : reports)
            ADD_FAILURE() << r.location << ": " << r.description;
        break;
    case Expect::Any: EXPECT_FALSE(reports.empty()); break;
    case Expect::Number:
    case Expect::Message: {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.location, c.expect.location);
        if (c.expect.how == Expect::Number) {
            EXPECT_EQ(r.kind, 0);
            EXPECT_EQ(r.number, c.expect.number);
        } else {
            EXPECT_EQ(r.kind, 2);
            EXPECT_EQ(r.title, c.expect.title);
            EXPECT_EQ(r.description, c.expect.message);
        }
    }
    }
    expectRecovery(c.newLine);
    if (c.after)
        c.after(*this);
    EXPECT_LT(lines.clock().elapsed(), 60s);
}

const char* familyName(Family f)
{
    static const char* names[] = {"OpScan", "ScanMark", "Pdi", "EZData", "Chatsworth"};
    return names[static_cast<int>(f)];
}

INSTANTIATE_TEST_SUITE_P(Line, Fault, ::testing::ValuesIn(cases()), [](const auto& c) {
    return std::string(familyName(c.param.family)) + "_" + c.param.name;
});

} // namespace
} // namespace zebreader81::test
