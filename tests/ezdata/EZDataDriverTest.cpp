// The EZData driver end to end: configuration, reads, routing and faults against the simulator.
#include "sim/ezdata/EZDataSimulator.h"
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Sim = sim::EZDataSimulator;
using Words = std::vector<std::string>;
Sim& ez(SimulatedReader& s) { return s.scanner<Sim>(); }

struct EZData : ::testing::Test, SimulatedReader {
    EZData() : SimulatedReader(zebReaderTypeNCSEZData) {}
    Sim& scanner() { return ez(*this); }
};

TEST_F(EZData, ConfigurationCommandsGoOnlyForTheFieldsThatDiffer)
{
    struct Case {
        std::function<void(Sim&)> change;
        int16_t threshold;
        Words words;
    };
    const Case cases[] = {
        {[](Sim&) {}, 5, {"GETCONFIG", "S"}},
        {[](Sim& s) { s.setFlags("01"); }, 5, {"GETCONFIG", "SETFLAGS03", "S"}},
        {[](Sim& s) { s.setTiming("81"); }, 5, {"GETCONFIG", "SETTMCH0", "S"}},
        {[](Sim& s) { s.setThresholdCode("78"); }, 5, {"GETCONFIG", "SETTHRESH5", "S"}},
        {[](Sim& s) { s.setDecay("2.0"); }, 5, {"GETCONFIG", "SETDECAY3", "S"}},
        // Codes 60 to 78 stand for 0 to 9 (each is checked on its own beside the protocol); any
        // other for whatever is wanted.
        {[](Sim& s) { s.setThresholdCode("60"); }, 0, {"GETCONFIG", "S"}},
        {[](Sim& s) { s.setThresholdCode("99"); }, 5, {"GETCONFIG", "S"}},
        {[](Sim& s) { s.setFlags("00"), s.setTiming("00"), s.setThresholdCode("60"), s.setDecay("1.0"); },
         7,
         {"GETCONFIG", "SETFLAGS03", "SETTMCH0", "SETTHRESH7", "SETDECAY3", "S"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(framed(c.words));
        attach();
        c.change(scanner());
        reader.RecognitionThreshold(c.threshold);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(sent(), framed(c.words));
        if (c.words.size() > 3) {
            EXPECT_EQ(scanner().configText(), "22 03 80 01 INL74 1.5 ")
                << "the scanner holds what was wanted";
        }
        mark();
        ASSERT_TRUE(reader.EndReader());
        EXPECT_EQ(sent(), framed({"D"}));
    }
    EXPECT_TRUE(quiet());
}

const std::string kInit = "basNCSEZData.InitReaderNCSEZ";
const std::string kRead = "basNCSEZData.ReadPageNCSEZ";

// A fault reported under the family's title.
FaultCase fault(const char* name, std::function<void(Sim&)> arrange, Step step, std::string message,
                std::string location, std::string wire)
{
    FaultCase c(name, zebReaderTypeNCSEZData, nullptr, step, 2, "EZData Scanner Error",
                "EZData Scanner - " + message, location, std::move(wire));
    c.arrange = [arrange](SimulatedReader& s) { arrange(ez(s)); };
    return c;
}
FaultCase answer(const char* name, std::string word, std::string bytes, std::string step, Words wire)
{
    return fault(
        name, [=](Sim& s) { s.overrideAnswer(word, bytes); }, Step::Start,
        "Unexpected data returned from scanner (" + step + ").", kInit, framed(wire));
}
FaultCase refusedSetting(const char* name, std::string bytes, std::string what)
{
    auto arrange = [=](Sim& s) {
        s.setFlags("00"), s.setTiming("00"), s.overrideAnswer("SETFLAGS03", bytes);
    };
    return fault(name, arrange, Step::Start,
                 "Unexpected data " + what + "returned from scanner in response to: SETFLAGS03",
                 "basNCSEZData.SetValuesNCSEZ", framed({"GETCONFIG", "SETFLAGS03"}));
}
const std::string good = "G22 03 80 01 INL70 1.5 \r";
const std::string text = good.substr(1, 22);

const FaultCase faults[] = {
    // The configuration answer must be 24 bytes 100 ms after the command.
    answer("ConfigLong", "GETCONFIG", good + "\r", "GETCONFIG3", {"GETCONFIG"}),
    answer("ConfigRefused", "GETCONFIG", "?" + text + "\r", "GETCONFIG?", {"GETCONFIG"}),
    answer("ConfigNotAccepted", "GETCONFIG", "g" + text + "\r", "GETCONFIG1", {"GETCONFIG"}),
    answer("ConfigWithoutCr", "GETCONFIG", "G" + text + " ", "GETCONFIG2", {"GETCONFIG"}),
    fault(
        "WrongLineCode", [](Sim& s) { s.setLineCode("12"), s.setFlags("00"); }, Step::Start,
        "Invalid baud rate returned by scanner.", kInit, framed({"GETCONFIG"})),
    // A wrong state fails after the flags and timing, before the threshold.
    fault(
        "WrongState", [](Sim& s) { s.setState("ERR"), s.setFlags("00"), s.setThresholdCode("60"); },
        Step::Start, "Incorrect scanner status (INL) returned by scanner.", kInit,
        framed({"GETCONFIG", "SETFLAGS03"})),
    refusedSetting("SettingRefused", "?\r", "(?) "),
    refusedSetting("SettingNotAccepted", "N\r", "(return_value) "),
    refusedSetting("SettingUnanswered", "", "(#bytes) "),
    refusedSetting("SettingQuestionMark", "G?", ""),
    fault(
        "PowerOnFailure", [](Sim& s) { s.setStatusBits(4); }, Step::Start,
        "Scanner reports a power-on failure.", kInit, framed({"GETCONFIG", "S"})),
    fault(
        "SheetThatWillNotLeave",
        [](Sim& s) {
            s.setSheetInTransport(true);
            s.overrideAnswer("ER", "G\r"); // answered, but the sheet stays
        },
        Step::Start, "Scanner reports a paper in transport.  Clear transport and retry.", kInit,
        framed({"GETCONFIG", "S", "ER", "S", "ER", "S", "ER", "S"})),
    answer("StatusWithoutByte", "S", "G\r", "STATUS", {"GETCONFIG", "S"}),
    answer("StatusWithoutCr", "S", "G  ", "STATUS", {"GETCONFIG", "S"}),
    answer("StatusRefused", "S", "? \r", "STATUS?", {"GETCONFIG", "S"}),
    answer("StatusNotAccepted", "S", "X \r", "STATUS1", {"GETCONFIG", "S"}),
    fault(
        "EnableRefused", [](Sim& s) { s.overrideAnswer("E", "?\r"); }, Step::Read,
        "Unexpected data returned from scanner (ENABLE?).", kRead, framed({"GETCONFIG", "S", "E"})),
    fault(
        "DisableUnanswered", [](Sim& s) { s.overrideAnswer("D", ""); }, Step::End,
        "Unexpected data returned from scanner (DISABLE1).", "basNCSEZData.CloseReaderNCSEZ",
        framed({"GETCONFIG", "S", "D"})),
    fault(
        "DisableWithoutCr", [](Sim& s) { s.overrideAnswer("D", "G"); }, Step::End,
        "Unexpected data returned from scanner (DISABLE2).", "basNCSEZData.CloseReaderNCSEZ",
        framed({"GETCONFIG", "S", "D"})),
};
INSTANTIATE_TEST_SUITE_P(EZData, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

const ReadCase reads[] = {
    {"Model37IsDrivenByTheSameCode", zebReaderTypeChatsworthACF100,
     [](SimulatedReader& s) { ez(s).setDecay("0.5"); }, card({{6, 7}}), 150, 12, 0, 0, 6, 1, framed({"E"})},
};
INSTANTIATE_TEST_SUITE_P(EZData, FamilyRead, ::testing::ValuesIn(reads), caseName<ReadCase>);

TEST_F(EZData, RejectSendsErOrEfByRejecterOncePerSheetAndTheBatchEndEf)
{
    load(card({{1}}));
    load(card({{2}}));
    reader.Rejecter(true);
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    reader.RejectPage();
    reader.Rejecter(false);
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    EXPECT_EQ(sent(), framed({"GETCONFIG", "S", "E", "ER", "E", "EF"}));
    EXPECT_EQ(scanner().dispositions(), (Words{"ER", "EF"}));
    EXPECT_TRUE(quiet());
    reader.EndReader();

    attach({card({{1}}), card({{2}})});
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(sent(), framed({"GETCONFIG", "S", "E", "E", "EF", "D"}));
    EXPECT_EQ(scanner().dispositions(), (Words{"next", "EF"}));
    EXPECT_EQ(events->sheets, 4);

    attach({card({{1}})});
    reset();
    reader.Rejecter(true);
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    scanner().overrideAnswer("ER", "?\r");
    reader.RejectPage();
    expectReport(2, "EZData Scanner Error",
                 "EZData Scanner - Unexpected data returned from scanner (EJECT?).",
                 "basNCSEZData.RejectPageNCSEZ");
}

} // namespace
} // namespace zebreader81::test
