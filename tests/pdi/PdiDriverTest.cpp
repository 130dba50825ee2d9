// The VMR138 driver end to end: the reader against the simulator, checked by what the driver sent.
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "sim/pdi/PdiSimulator.h"
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Sim = sim::PdiSimulator;
Sim& pdi(SimulatedReader& s) { return s.scanner<Sim>(); }

struct Pdi : ::testing::Test, SimulatedReader {
    Pdi() : SimulatedReader(zebReaderTypePDIVMR138) {}
};

TEST_F(Pdi, InitBringsTheThresholdToTheWantedValueAndAnswersStatusBits)
{
    struct Case {
        int from, status1, status2;
        std::string sent;
    };
    // The first "+" reads the scanner's value (one below where it stood); "D", "G" and "E"
    // clear status bits 16, 4 and 8.
    const Case cases[] = {{248, 0, 0, "0Q++++++++"},
                          {200, 0, 0, "0Q+" + std::string(41, '-')},
                          {241, 16 | 4, 8, "0QDGE+"},
                          {241, 4, 0, "0QG+"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sent);
        attach();
        pdi(*this).setThreshold(c.from);
        pdi(*this).setStatus(c.status1, c.status2);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(sent(), c.sent);
        EXPECT_EQ(pdi(*this).threshold(), 240);
        EXPECT_EQ(pdi(*this).status1() | pdi(*this).status2(), 0);
        reader.EndReader();
    }
    EXPECT_TRUE(quiet());
}

const FaultCase faults[] = {
    {"FrontSensor", zebReaderTypePDIVMR138, [](SimulatedReader& s) { pdi(s).setStatus(2 | 64); }, Step::Start,
     2, "Status Error",
     "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is improperly "
     "closed. Please clear any form from the front of the scanner and try again.",
     "basPeripheralDynamics.CheckStatusPD", "0Q4", [](SimulatedReader& s) { EXPECT_EQ(pdi(s).ejects(), 1); }},
    {"SilentWhateverTheTimeOut", zebReaderTypePDIVMR138,
     [](SimulatedReader& s) {
         s.reader.TimeOut(600); // the status wait runs on its own 1000 ms
         s.peer().setSilent(true);
     },
     Step::Start, 2, "Status Error",
     "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and powered "
     "on.",
     "basPeripheralDynamics.CheckStatusPD", "0Q",
     [](SimulatedReader& s) {
         EXPECT_EQ(Reader::fComm(s.reader).tmrScan.Interval(), 1000) << "stays until the next StartReader";
     }},
    {"NoThreshold", zebReaderTypePDIVMR138, [](SimulatedReader& s) { pdi(s).setThresholdAnswer(""); },
     Step::Start, 2, "Threshold Initialization Error",
     "There was no response from the PDI scanner while initializing.",
     "basPeripheralDynamics.SetRecThresholdPD", "0Q+"},
    {"CancelWhileWaiting", zebReaderTypePDIVMR138, nullptr, Step::Read, 0, "", "", "", "0Q+Q8", nullptr,
     cancel, 300ms},
};
INSTANTIATE_TEST_SUITE_P(Pdi, FamilyFault, ::testing::ValuesIn(faults), caseName<FaultCase>);

TEST_F(Pdi, RawStreamRoundsTheRowCountAndReadsOnPastAnInnerCR)
{
    ASSERT_TRUE(reader.StartReader());
    mark();
    // After "0Q+Q8": 13 as data (bits 1, 4, 8), an empty half, a lone first byte "A" (64 + 1), CR.
    peer().whenReceived(5, [this] { peer().inject(std::string{'\n', '\r', '@', 'A', '\r'}); });
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(reader.Side1TimingMarks(), 2) << "four characters behind the LF: 1.5 rounds to 2";
    EXPECT_EQ(reader.Side1Array(), expectedSide(card({{1}, {1, 3, 4}}), 1, 500, 14, 241));
    EXPECT_EQ(sent(), "Q89");
}

TEST_F(Pdi, RejectSendsThreeTheBatchEndEjectsWithFourAndCloseSendsNine)
{
    for (int i = 0; i < 3; ++i)
        load(card({{1}}));
    events->onReadSheet = [this](int sheet, bool&) {
        if (sheet == 1)
            reader.RejectPage();
    };
    int32_t count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, 2, count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(sent(), "0Q+Q893Q8949");
    EXPECT_EQ(pdi(*this).rejects(), 1);
    EXPECT_EQ(pdi(*this).sheetsLeft(), 1u);

    ASSERT_TRUE(reader.StartReader());
    mark();
    EXPECT_FALSE(reader.EndReader()) << "the close has no result for this model";
    EXPECT_EQ(sent(), "9");
    EXPECT_FALSE(Reader::fComm(reader).mscComm.PortOpen());
    EXPECT_TRUE(quiet());
}

} // namespace
} // namespace zebreader81::test
