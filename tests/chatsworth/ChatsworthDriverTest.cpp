// The Chatsworth driver end to end: the reader object against the simulated card reader.
#include "drivers/ReaderAccess.h"
#include "hardening/FaultSupport.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

constexpr int16_t kPort = 6;
const std::string kDownload = "download R7777 I00";

sim::Sheet cardOf(std::vector<std::vector<int>> rows)
{
    sim::Sheet s;
    s.side1 = std::move(rows);
    return s;
}

std::vector<int> markRow(std::initializer_list<int> columns)
{
    std::vector<int> row(12, 0);
    for (int c : columns)
        row[static_cast<std::size_t>(c - 1)] = 9;
    return row;
}

struct Chatsworth : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::ChatsworthSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    Chatsworth()
    {
        newScanner();
        reader.ReaderType(zebReaderTypeChatsworthOMR1100);
        reader.LoadDefaults(zebReaderTypeChatsworthOMR1100);
        reader.Port(kPort);
        reader.TimeOut(1);
        reader.RecognitionThreshold(5);
        reader.Advise(events);
    }

    // A reader set up as a previous session left it (feed and exit control on), on a line of
    // its own: each case of a table gets one.
    sim::ChatsworthSimulator& newScanner(uint8_t flags = 0x03)
    {
        scanner = std::make_unique<sim::ChatsworthSimulator>();
        sim::mapPort(kPort, scanner->path());
        scanner->setFeedDelay(300ms);
        scanner->setFlags(flags);
        return *scanner;
    }

    void expectReport(const std::string& message, const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.description, "Chatsworth Scanner - " + message);
        EXPECT_EQ(r.kind, 2);
        EXPECT_EQ(r.title, "Chatsworth Scanner Error");
        EXPECT_EQ(r.location, "basChatsworth." + procedure);
    }

    // Runs `action` `after` the enable was answered, while the driver waits for the card.
    std::unique_ptr<OnLine> whileWaitingForTheCard(std::function<void()> action,
                                                   std::chrono::milliseconds after = 100ms)
    {
        return std::make_unique<OnLine>(*scanner, scanner->sent().size() + 2, std::move(action), after);
    }
};

TEST_F(Chatsworth, InitSwitchesOnFeedAndExitControlOnlyWhenOffThenDownloadsTheConversion)
{
    const std::pair<uint8_t, Words> cases[] = {
        {0x00, {"GETCONFIG", "SETFLAGS03", "CHECKSUM", kDownload, "S"}},
        {0x41, {"GETCONFIG", "SETFLAGS43", "CHECKSUM", kDownload, "S"}},
        {0x43, {"GETCONFIG", kDownload, "S"}},
    };
    for (const auto& [flags, words] : cases) {
        SCOPED_TRACE(flags);
        newScanner(flags);
        EXPECT_FALSE(scanner->converting()) << "a reader powers up without a conversion";
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner->words(), words);
        EXPECT_EQ(scanner->flags(), flags | 0x03);
        EXPECT_TRUE(scanner->converting());
        EXPECT_TRUE(reader.EndReader());
        EXPECT_EQ(scanner->words().size(), words.size()) << "no close procedure";
    }
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Chatsworth, CardLeftInTheTransportGoesOutTheFrontAndStatusIsAskedAgain)
{
    scanner->setCardInTransport(true);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", kDownload, "S", "EF", "S"}));
    EXPECT_EQ(scanner->dispositions(), Words{"EF"});
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(reader.EndReader());

    newScanner().setCardInTransport(true);
    scanner->overrideAnswer("EF", "G\r"); // answered, but the card stays
    EXPECT_FALSE(reader.StartReader());
    expectReport("A card stays in the transport.  Clear the transport and retry.", "InitReaderCT");
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", kDownload, "S", "EF", "S", "EF", "S", "EF", "S"}));
}

TEST_F(Chatsworth, StatusAndAnswerFaultsFailTheInit)
{
    struct Case {
        std::string word, answer, message;
    };
    const Case cases[] = {
        {"S", "\x22\r", "The scanner reports a jam.  Clear the transport and retry."},
        {"S", "G\x14\r", "The scanner reports a self-test failure."},
        {"S", "", "No answer from the scanner to the status command."},
        {"S", "\x12\x1bS?\r", "The scanner refused the status command."},
        {"S", "\x10\x10\r", "Unexpected answer from the scanner to the status command."},
        {"GETCONFIG", "G22 0\r", "Unexpected answer from the scanner to the GETCONFIG command."},
        {"GETCONFIG", "\x12\x1bGETCONFIG?\r", "The scanner refused the GETCONFIG command."},
        {"CHECKSUM", "?\r", "The scanner refused the CHECKSUM command."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        errors.host->reports.clear();
        reader.CancelScan(false);
        newScanner(0).overrideAnswer(c.word, c.answer);
        EXPECT_FALSE(reader.StartReader());
        expectReport(c.message, "InitReaderCT");
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(scanner->words().back(), c.word) << "nothing after the fault";
        reader.EndReader();
    }
}

TEST_F(Chatsworth, CardIsDecodedIntoTwelveColumnsThenLeavesToTheRear)
{
    // Rows 1 to 12: one mark in column n; row 13 blank; row 14 full.
    std::vector<std::vector<int>> rows;
    for (int c = 1; c <= 12; ++c)
        rows.push_back(markRow({c}));
    rows.push_back(markRow({}));
    rows.push_back(markRow({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    scanner->addSheet(cardOf(rows));

    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(errors.host->reports.empty());
    ASSERT_EQ(events->side1.size(), 1u);
    const auto& s = events->side1[0];
    ASSERT_EQ(s.LBound(1), 1);
    ASSERT_EQ(s.UBound(1), 126);
    ASSERT_EQ(s.LBound(2), 1);
    ASSERT_EQ(s.UBound(2), 12);
    for (int32_t r = 1; r <= 126; ++r)
        for (int32_t c = 1; c <= 12; ++c)
            EXPECT_EQ(s(r, c), (r <= 12 && c == r) || r == 14 ? 6 : 0) << r << "," << c;
    EXPECT_EQ(reader.Side1TimingMarks(), 14) << "the blank row counts";
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", kDownload, "S", "E", "ER"}));
    EXPECT_EQ(scanner->dispositions(), Words{"ER"});
}

TEST_F(Chatsworth, EveryModelOfTheFamilyReadsTheSameWay)
{
    for (auto type :
         {zebReaderTypeChatsworthOMR2000, zebReaderTypeChatsworthACF200, zebReaderTypeChatsworthACP200}) {
        SCOPED_TRACE(type);
        reader.ReaderType(type);
        reader.Feeder(type == zebReaderTypeChatsworthOMR2000); // the OMR2000 has a hopper
        newScanner().addSheet(cardOf({markRow({3}), markRow({10})}));
        ASSERT_TRUE(reader.StartReader());
        ASSERT_TRUE(reader.ReadPage());
        EXPECT_EQ(reader.Side1Array()(1, 3), 6);
        EXPECT_EQ(reader.Side1Array()(2, 10), 6);
        EXPECT_EQ(reader.Side1TimingMarks(), 2);
        reader.RejectPage(); // not routed for these models: the card has gone already
        EXPECT_EQ(scanner->dispositions(), Words{"ER"});
        EXPECT_TRUE(reader.EndReader());
    }
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Chatsworth, AccelScanCardWaitsForRejectOrEject)
{
    reader.ReaderType(zebReaderTypeChatsworthALSAccelScanOMR);
    for (int i = 0; i < 3; ++i)
        scanner->addSheet(cardOf({markRow({i + 1})}));
    ASSERT_TRUE(reader.StartReader());
    reader.Rejecter(true);
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(scanner->cardInTransport());
    reader.RejectPage();
    reader.Rejecter(false);
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    ASSERT_TRUE(reader.ReadPage());
    reader.EjectPage();
    EXPECT_TRUE(Reader::SheetHandled(reader)) << "the eject's result";
    EXPECT_EQ(scanner->dispositions(), (Words{"EF", "ER", "ER"}));
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", kDownload, "S", "E", "EF", "E", "ER", "E", "ER"}));
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Chatsworth, AccelScanCardNobodyDisposedOfGoesOnBeforeTheNextIsFed)
{
    reader.ReaderType(zebReaderTypeChatsworthALSAccelScanOMR);
    scanner->addSheet(cardOf({markRow({1})}));
    scanner->addSheet(cardOf({markRow({2})}));
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", kDownload, "S", "E", "ER", "E", "ER"}));
    EXPECT_EQ(events->sheets, 2);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Chatsworth, RefusedEnableAndAHopperThatFeedsNothingAreReported)
{
    ASSERT_TRUE(reader.StartReader());
    scanner->setCardInTransport(true); // the reader keeps its transport shut
    EXPECT_FALSE(reader.ReadPage());
    expectReport("The scanner refused the enable command.", "ReadPageCT");

    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->setCardInTransport(false);
    reader.Feeder(true);
    EXPECT_FALSE(reader.ReadPage());
    expectReport("No card was read within the time-out.", "ReadPageCT");
    const auto words = scanner->words();
    EXPECT_EQ(Words(words.end() - 3, words.end()), (Words{"E", "S", "D"}))
        << "the status tells a jam from an empty hopper, then the transport is shut";
}

TEST_F(Chatsworth, HandFedWaitEndsOnlyByCancelScanAndQuietly)
{
    ASSERT_TRUE(reader.StartReader());
    {
        // Beyond TimeOut: a hand-fed card has no time-out.
        const auto canceller = whileWaitingForTheCard([&] { reader.CancelScan(true); }, 1200ms);
        EXPECT_FALSE(reader.ReadPage());
    }
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(events->side1.empty());
    EXPECT_EQ(scanner->words().back(), "D") << "no card comes in unasked after the cancel";
}

TEST_F(Chatsworth, BadCardDataIsReported)
{
    const std::pair<std::string, std::string> cases[] = {
        {"!!! \x1f", "Byte 31 in row 3 of the card data is outside 32 to 127."},
        {"!\xc1", "Byte 193 in row 1 of the card data is outside 32 to 127."},
        {std::string(2 * 127, '!') + "\r", "The card is longer than 126 rows."},
    };
    for (const auto& [bytes, message] : cases) {
        SCOPED_TRACE(message);
        errors.host->reports.clear();
        reader.CancelScan(false);
        newScanner();
        ASSERT_TRUE(reader.StartReader());
        {
            const auto feeder = whileWaitingForTheCard([&, b = bytes] { scanner->inject(b); });
            EXPECT_FALSE(reader.ReadPage());
        }
        expectReport(message, "ReadPageCT");
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(scanner->words().back(), "D") << "the transport is shut after a failed read";
        reader.EndReader();
    }
}

} // namespace
} // namespace zebreader81::test
