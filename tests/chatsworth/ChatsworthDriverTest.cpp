// The Chatsworth driver end to end: the reader against the simulated card reader.
#include "drivers/ReaderAccess.h"
#include "sim/chatsworth/ChatsworthSimulator.h"
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Sim = sim::ChatsworthSimulator;
using Words = std::vector<std::string>;
Sim& cw(SimulatedReader& s) { return s.scanner<Sim>(); }
const std::string kDownload = "download R7777 I00";

struct Chatsworth : ::testing::Test, SimulatedReader {
    Chatsworth() : SimulatedReader(zebReaderTypeChatsworthOMR1100) {}
    Sim& scanner() { return cw(*this); }
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
        attach();
        scanner().setFlags(flags);
        EXPECT_FALSE(scanner().converting()) << "a reader powers up without a conversion";
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner().words(), words);
        EXPECT_EQ(scanner().flags(), flags | 0x03);
        EXPECT_TRUE(scanner().converting());
        EXPECT_TRUE(reader.EndReader());
        EXPECT_EQ(scanner().words().size(), words.size()) << "no close procedure";
    }
    EXPECT_TRUE(quiet());
}

TEST_F(Chatsworth, AccelScanCardWaitsForRejectOrEjectAndGoesOnBeforeTheNextIsFed)
{
    reader.ReaderType(zebReaderTypeChatsworthALSAccelScanOMR);
    for (int i = 0; i < 3; ++i)
        load(card({{i + 1}}));
    ASSERT_TRUE(reader.StartReader());
    reader.Rejecter(true);
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(scanner().cardInTransport());
    reader.RejectPage();
    reader.Rejecter(false);
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    ASSERT_TRUE(reader.ReadPage());
    reader.EjectPage();
    EXPECT_TRUE(Reader::SheetHandled(reader)) << "the eject's result";
    EXPECT_EQ(scanner().dispositions(), (Words{"EF", "ER", "ER"}));
    EXPECT_EQ(scanner().words(), (Words{"GETCONFIG", kDownload, "S", "E", "EF", "E", "ER", "E", "ER"}));
    reader.EndReader();

    // A card nobody disposed of goes on before the next is fed.
    attach({card({{1}}), card({{2}})});
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(scanner().words(), (Words{"GETCONFIG", kDownload, "S", "E", "ER", "E", "ER"}));
    EXPECT_EQ(events->sheets, 5);
    EXPECT_TRUE(quiet());
}

// A fault reported under the family's title.
FaultCase fault(const char* name, std::function<void(SimulatedReader&)> arrange, Step step,
                std::string message, const char* procedure, std::string wire)
{
    FaultCase c(name, zebReaderTypeChatsworthOMR1100, nullptr, step, 2, "Chatsworth Scanner Error",
                "Chatsworth Scanner - " + message, std::string("basChatsworth.") + procedure,
                std::move(wire));
    c.arrange = std::move(arrange);
    return c;
}
// An answer that fails the init of a reader with feed and exit control off; nothing follows it.
FaultCase answer(const char* name, std::string word, std::string bytes, std::string message)
{
    auto arrange = [=](SimulatedReader& s) { cw(s).setFlags(0), cw(s).overrideAnswer(word, bytes); };
    return fault(name, arrange, Step::Start, std::move(message), "InitReaderCT", "..." + framed({word}));
}
// Card data the driver refuses, sent while it waits for the card; the transport is shut after.
FaultCase badCard(const char* name, std::string bytes, std::string message)
{
    auto c = fault(name, nullptr, Step::Read, std::move(message), "ReadPageCT", "..." + framed({"D"}));
    c.during = [bytes](SimulatedReader& s) { s.peer().inject(bytes); };
    c.after = 400ms;
    return c;
}

const FaultCase faults[] = {
    fault(
        "CardThatStaysInTheTransport",
        [](SimulatedReader& s) {
            cw(s).setCardInTransport(true);
            cw(s).overrideAnswer("EF", "G\r"); // answered, but the card stays
        },
        Step::Start, "A card stays in the transport.  Clear the transport and retry.", "InitReaderCT",
        "..." + framed({"S", "EF", "S", "EF", "S", "EF", "S"})),
    answer("Jam", "S", "\x22\r", "The scanner reports a jam.  Clear the transport and retry."),
    answer("SelfTest", "S", "G\x14\r", "The scanner reports a self-test failure."),
    answer("StatusRefused", "S", "\x12\x1bS?\r", "The scanner refused the status command."),
    answer("StatusOther", "S", "\x10\x10\r", "Unexpected answer from the scanner to the status command."),
    answer("ConfigOther", "GETCONFIG", "G22 0\r",
           "Unexpected answer from the scanner to the GETCONFIG command."),
    answer("ConfigRefused", "GETCONFIG", "\x12\x1bGETCONFIG?\r",
           "The scanner refused the GETCONFIG command."),
    answer("ChecksumRefused", "CHECKSUM", "?\r", "The scanner refused the CHECKSUM command."),
    fault(
        "EnableRefused", [](SimulatedReader& s) { cw(s).overrideAnswer("E", "?\r"); }, Step::Read,
        "The scanner refused the enable command.", "ReadPageCT", "..." + framed({"S", "E"})),
    // The status tells a jam from an empty hopper, then the transport is shut.
    fault(
        "HopperThatFeedsNothing", [](SimulatedReader& s) { s.reader.Feeder(true); }, Step::Read,
        "No card was read within the time-out.", "ReadPageCT", "..." + framed({"E", "S", "D"})),
    badCard("ByteBelow32", "!!! \x1f", "Byte 31 in row 3 of the card data is outside 32 to 127."),
    badCard("CardTooLong", std::string(2 * 127, '!') + "\r", "The card is longer than 126 rows."),
    // A hand-fed card has no time-out; no card comes in unasked after the cancel.
    {"HandFedCancel", zebReaderTypeChatsworthOMR1100, nullptr, Step::Read, 0, "", "", "",
     "..." + framed({"E", "D"}), nullptr, cancel, 1200ms},
};
INSTANTIATE_TEST_SUITE_P(Chatsworth, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

// Rows 1 to 12 have one mark each, in column n; row 13 is blank (it counts), row 14 full.
const std::vector<int> everyColumn{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
const sim::Sheet bitByBit =
    card({{1}, {2}, {3}, {4}, {5}, {6}, {7}, {8}, {9}, {10}, {11}, {12}, {}, everyColumn});
// The card leaves to the rear.
const ReadCase reads[] = {
    {"OMR1100", zebReaderTypeChatsworthOMR1100, nullptr, bitByBit, 126, 12, 0, 0, 6, 14, framed({"E", "ER"})},
    {"OMR2000WithItsHopper", zebReaderTypeChatsworthOMR2000,
     [](SimulatedReader& s) { s.reader.Feeder(true); }, card({{3}, {10}}), 126, 12, 0, 0, 6, 2,
     framed({"E", "ER"})},
};
INSTANTIATE_TEST_SUITE_P(Chatsworth, FamilyRead, ::testing::ValuesIn(reads), caseName<ReadCase>);

} // namespace
} // namespace zebreader81::test
