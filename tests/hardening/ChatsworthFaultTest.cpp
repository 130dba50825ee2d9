// Chatsworth faults on the line and in the reader: each read fails with its report, and the
// reader reads the next card correctly after EndReader and StartReader.
#include "hardening/FaultSupport.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

constexpr int16_t port = 13;
const std::string enable = std::string("\x12\x1b") + "E" + "\x12" + "E";

// Column c of row r is marked when (r + c) % 3 == 0.
bool marked(int row, int col) { return (row + col) % 3 == 0; }

sim::Sheet grid(int rows)
{
    return sheetOf(rows, 12, [](int r, int c) { return marked(r, c) ? 9 : 0; });
}

struct ChatsworthFaults : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::ChatsworthSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    ChatsworthFaults()
    {
        plugIn();
        reader.ReaderType(zebReaderTypeChatsworthOMR1100);
        reader.LoadDefaults(zebReaderTypeChatsworthOMR1100);
        reader.Port(port);
        reader.TimeOut(1);
        reader.RecognitionThreshold(5);
        reader.Advise(events);
    }

    void plugIn()
    {
        scanner = std::make_unique<sim::ChatsworthSimulator>();
        sim::mapPort(port, scanner->path());
        scanner->setFeedDelay(300ms);
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
        EXPECT_EQ(r.title, "Chatsworth Scanner Error");
        EXPECT_EQ(r.description, "Chatsworth Scanner - " + message);
        EXPECT_EQ(r.location, "basChatsworth.ReadPageCT");
    }

    // A card left half read in the transport goes out the front at the next start.
    void expectRecovery(bool newLine = false)
    {
        scanner->clearFaults();
        scanner->clearOverrides();
        scanner->clearJam();
        scanner->waitIdle(5s);
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
        EXPECT_EQ(scanner->dispositions().back(), "ER");
    }
};

TEST_F(ChatsworthFaults, HangUpInMidCardIsAPortErrorOfTheRead)
{
    start();
    scanner->addSheet(grid(40));
    // The enable answer and ten bytes of the card, then the line goes.
    scanner->stallAfter(2 + 10);
    OnLine hangUp(*scanner, scanner->sent().size() + 12, [s = scanner.get()] { s->hangUp(); });
    failingRead();
    const auto& r = errors.host->only();
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.number, 8020);
    EXPECT_EQ(r.location, "basChatsworth.ReadPageCT");
    expectRecovery(true);
}

TEST_F(ChatsworthFaults, JamInMidCardIsToldByTheStatus)
{
    start();
    scanner->jamAfterRows(7);
    scanner->addSheet(grid(40));
    failingRead();
    expectReport("The scanner reports a jam.  Clear the transport and retry.");
    EXPECT_EQ(scanner->words().end()[-2], "S");
    expectRecovery();
}

TEST_F(ChatsworthFaults, LineThatFallsSilentInMidCardLeavesTheStatusUnanswered)
{
    start();
    scanner->addSheet(grid(40));
    scanner->stallAfter(2 + 2 * 9); // the enable answer and nine rows
    failingRead();
    expectReport("No answer from the scanner to the status command.");
    expectRecovery();
}

TEST_F(ChatsworthFaults, CardThatStopsWithoutAJamSaysWhere)
{
    start();
    {
        OnLine rows(*scanner, scanner->sent().size() + 2,
                    [s = scanner.get()] { s->inject(std::string(19, '!')); });
        failingRead();
    }
    expectReport("The card data stopped after row 9.");
    expectRecovery();
}

TEST_F(ChatsworthFaults, PowerCycleLosesTheConversionUntilTheNextStart)
{
    reader.Feeder(true);
    start();
    scanner->powerCycle();
    scanner->addSheet(grid(10));
    failingRead();
    expectReport("No card was read within the time-out.");
    EXPECT_FALSE(scanner->converting());
    reader.Feeder(false);
    expectRecovery();
    EXPECT_EQ(scanner->dispositions(), (std::vector<std::string>{"EF", "ER"}))
        << "the card read without data went out the front";
}

TEST_F(ChatsworthFaults, CommandWhileTheCardMovesIsIgnoredAndReported)
{
    start();
    scanner->setFeedDelay(2500ms);
    scanner->addSheet(grid(10));
    {
        CancelWhenWaiting cancel(reader, *scanner, scanner->receivedCount() + enable.size());
        failingRead();
    }
    EXPECT_TRUE(errors.host->reports.empty()) << "a cancel is quiet";
    reader.CancelScan(false);
    failingRead();
    expectReport("No answer from the scanner to the enable command.");
    const auto words = scanner->words();
    const auto enabled = std::find(words.begin(), words.end(), "E");
    ASSERT_GE(words.end() - enabled, 3);
    EXPECT_EQ(std::vector<std::string>(enabled, enabled + 3),
              (std::vector<std::string>{"E", "ignored D", "ignored E"}));
    scanner->setFeedDelay(300ms);
    expectRecovery();
}

} // namespace
} // namespace zebreader81::test
