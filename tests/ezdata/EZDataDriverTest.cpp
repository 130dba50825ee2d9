// The EZData driver end to end: the reader object against the simulated scanner->
#include "sim/ezdata/EZDataSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <thread>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

constexpr int16_t kPort = 5;
const std::string kTitle = "EZData Scanner Error";

std::string framed(const std::string& word) { return "\x12\x1b" + word + "\x12" + "E"; }

sim::Sheet sheetOf(std::vector<std::vector<int>> rows)
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

struct EZData : ::testing::Test {
    HostScope errors;
    std::unique_ptr<sim::EZDataSimulator> scanner;
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    EZData()
    {
        newScanner();
        reader.ReaderType(zebReaderTypeNCSEZData);
        reader.Port(kPort);
        reader.BaudRate(zebReaderBaudRate9600);
        reader.Parity("E");
        reader.DataBits(zebReaderDataBits7);
        reader.StopBits(1);
        reader.TimeOut(1);
        reader.SleepTime(2);
        reader.RecognitionThreshold(5);
        reader.Advise(events);
    }

    // A scanner on a line of its own; each case of a table gets one, so that every port is
    // opened once per line.
    sim::EZDataSimulator& newScanner()
    {
        scanner = std::make_unique<sim::EZDataSimulator>();
        sim::mapPort(kPort, scanner->path());
        scanner->setFeedDelay(700ms);
        scanner->setThresholdCode("70");
        return *scanner;
    }

    void expectDeviceReport(const std::string& message, const std::string& procedure)
    {
        const auto& r = errors.host->only();
        EXPECT_EQ(r.description, message);
        EXPECT_EQ(r.kind, 2);
        EXPECT_EQ(r.title, kTitle);
        EXPECT_EQ(r.location, "basNCSEZData." + procedure);
    }

    // Sets CancelScan, or injects bytes, once the driver waits for the sheet.
    std::thread whileWaitingForTheSheet(std::function<void()> action)
    {
        const std::size_t sentBefore = scanner->received().size();
        return std::thread([this, sentBefore, action] {
            scanner->waitReceived(sentBefore + framed("E").size(), 5s);
            std::this_thread::sleep_for(700ms);
            action();
        });
    }
};

TEST_F(EZData, ConfiguredScannerReceivesNoConfigurationCommand)
{
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->received(), framed("GETCONFIG") + framed("S"));
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(reader.EndReader());
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "S", "D"}));
}

TEST_F(EZData, EveryDifferingFieldGetsItsCommandInOrder)
{
    scanner->setFlags("00");
    scanner->setTiming("00");
    scanner->setThresholdCode("60");
    scanner->setDecay("1.0");
    reader.RecognitionThreshold(7);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->words(),
              (Words{"GETCONFIG", "SETFLAGS03", "SETTMCH0", "SETTHRESH7", "SETDECAY3", "S"}));
    EXPECT_EQ(scanner->configText(), "22 03 80 01 INL74 1.5 ") << "the scanner holds what was wanted";
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(EZData, OnlyTheFieldThatDiffersIsSet)
{
    struct Case {
        std::function<void(sim::EZDataSimulator&)> change;
        std::string command;
    };
    const Case cases[] = {
        {[](auto& s) { s.setFlags("01"); }, "SETFLAGS03"},
        {[](auto& s) { s.setTiming("81"); }, "SETTMCH0"},
        {[](auto& s) { s.setThresholdCode("78"); }, "SETTHRESH5"},
        {[](auto& s) { s.setDecay("2.0"); }, "SETDECAY3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        c.change(newScanner());
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner->received(), framed("GETCONFIG") + framed(c.command) + framed("S"));
        ASSERT_TRUE(reader.EndReader());
    }
}

TEST_F(EZData, ThresholdCodes60To78StandFor0To9)
{
    for (int16_t t = 0; t <= 9; ++t) {
        newScanner().setThresholdCode(std::to_string(60 + 2 * t));
        reader.RecognitionThreshold(t);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_EQ(scanner->received(), framed("GETCONFIG") + framed("S")) << t;
        ASSERT_TRUE(reader.EndReader());
    }
    // A code outside the table stands for any threshold.
    newScanner().setThresholdCode("99");
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->received(), framed("GETCONFIG") + framed("S"));
}

TEST_F(EZData, ConfigurationAnswerMustBe24BytesAfter100ms)
{
    const std::string good = "G" + scanner->configText() + "\r";
    const std::pair<std::string, std::chrono::milliseconds> answers[] = {
        {good, 400ms}, // right, but late
        {good.substr(0, 23), 0ms},
        {good + "\r", 0ms},
    };
    for (const auto& [bytes, delay] : answers) {
        errors.host->reports.clear();
        newScanner().overrideAnswer("GETCONFIG", bytes, delay);
        EXPECT_FALSE(reader.StartReader());
        expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (GETCONFIG3).",
                           "InitReaderNCSEZ");
        EXPECT_TRUE(reader.CancelScan());
        EXPECT_EQ(scanner->words(), (Words{"GETCONFIG"}));
        reader.EndReader();
        reader.CancelScan(false);
    }
}

TEST_F(EZData, ConfigurationAnswerFaults)
{
    const std::string text = scanner->configText();
    const std::pair<std::string, std::string> answers[] = {
        {"?" + text + "\r", "GETCONFIG?"},
        {"g" + text + "\r", "GETCONFIG1"},
        {"G" + text.substr(0, 21) + "\r ", "GETCONFIG2"},
        {"G" + text + " ", "GETCONFIG2"},
    };
    for (const auto& [bytes, step] : answers) {
        SCOPED_TRACE(step);
        errors.host->reports.clear();
        newScanner().overrideAnswer("GETCONFIG", bytes);
        EXPECT_FALSE(reader.StartReader());
        expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (" + step + ").",
                           "InitReaderNCSEZ");
        reader.EndReader();
    }
}

TEST_F(EZData, WrongLineCodeFailsBeforeAnyCommand)
{
    scanner->setLineCode("12");
    scanner->setFlags("00");
    EXPECT_FALSE(reader.StartReader());
    expectDeviceReport("EZData Scanner - Invalid baud rate returned by scanner.", "InitReaderNCSEZ");
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG"}));
}

TEST_F(EZData, WrongStateFailsAfterFlagsAndTimingBeforeThreshold)
{
    scanner->setState("ERR");
    scanner->setFlags("00");
    scanner->setThresholdCode("60");
    EXPECT_FALSE(reader.StartReader());
    expectDeviceReport("EZData Scanner - Incorrect scanner status (INL) returned by scanner.",
                       "InitReaderNCSEZ");
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "SETFLAGS03"}));
}

TEST_F(EZData, BadAnswerToAConfigurationCommandEndsTheInit)
{
    const std::pair<std::string, std::string> answers[] = {
        {"?\r", "(?) "},        {"N\r", "(return_value) "}, {"G", "(#bytes) "},
        {"G\r\r", "(#bytes) "}, {"", "(#bytes) "},          {"G?", ""},
    };
    for (const auto& [bytes, what] : answers) {
        SCOPED_TRACE(what);
        errors.host->reports.clear();
        newScanner().setFlags("00");
        scanner->setTiming("00");
        scanner->overrideAnswer("SETFLAGS03", bytes);
        EXPECT_FALSE(reader.StartReader());
        expectDeviceReport("EZData Scanner - Unexpected data " + what +
                               "returned from scanner in response to: SETFLAGS03",
                           "SetValuesNCSEZ");
        EXPECT_EQ(scanner->received(), framed("GETCONFIG") + framed("SETFLAGS03"));
        reader.EndReader();
    }
}

TEST_F(EZData, SheetLeftInTheTransportIsRejectedAndStatusAskedAgain)
{
    scanner->setSheetInTransport(true);
    ASSERT_TRUE(reader.StartReader());
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "S", "ER", "S"}));
    EXPECT_EQ(scanner->dispositions(), (Words{"ER"}));
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(EZData, SheetThatWillNotLeaveIsReportedAsPaperInTransport)
{
    scanner->setSheetInTransport(true);
    scanner->overrideAnswer("ER", "G\r"); // answered, but the sheet stays
    EXPECT_FALSE(reader.StartReader());
    expectDeviceReport("EZData Scanner - Scanner reports a paper in transport.  Clear transport and retry.",
                       "InitReaderNCSEZ");
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "S", "ER", "S", "ER", "S", "ER", "S"}));
}

TEST_F(EZData, StatusFaultsFailTheInit)
{
    const std::pair<uint8_t, std::string> faults[] = {
        {4, "EZData Scanner - Scanner reports a power-on failure."},
        {16, "EZData Scanner - Scanner reports a paper in transport.  Clear transport and retry."},
    };
    for (const auto& [bits, message] : faults) {
        errors.host->reports.clear();
        newScanner().setStatusBits(bits);
        EXPECT_FALSE(reader.StartReader());
        expectDeviceReport(message, "InitReaderNCSEZ");
        reader.EndReader();
    }
}

TEST_F(EZData, StatusAnswerMustBeGStatusCr)
{
    const std::pair<std::string, std::string> answers[] = {
        {"G \r\r", "STATUS"}, {"G\r", "STATUS"}, {"G  ", "STATUS"}, {"? \r", "STATUS?"}, {"X \r", "STATUS1"},
    };
    for (const auto& [bytes, step] : answers) {
        SCOPED_TRACE(step);
        errors.host->reports.clear();
        newScanner().overrideAnswer("S", bytes);
        EXPECT_FALSE(reader.StartReader());
        expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (" + step + ").",
                           "InitReaderNCSEZ");
        reader.EndReader();
    }
}

TEST_F(EZData, SheetIsDecodedBitByBitIntoTwelveColumns)
{
    // Rows 1 to 12: one mark in column n; row 13 blank; row 14 full.
    std::vector<std::vector<int>> rows;
    for (int c = 1; c <= 12; ++c)
        rows.push_back(markRow({c}));
    rows.push_back(markRow({}));
    rows.push_back(markRow({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    scanner->addSheet(sheetOf(rows));
    reader.RecognitionThreshold(3);
    scanner->setThresholdCode("66");

    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(errors.host->reports.empty());
    ASSERT_EQ(events->side1.size(), 1u);
    const auto& s = events->side1[0];
    ASSERT_EQ(s.LBound(1), 1);
    ASSERT_EQ(s.UBound(1), 150);
    ASSERT_EQ(s.LBound(2), 1);
    ASSERT_EQ(s.UBound(2), 12);
    for (int32_t r = 1; r <= 150; ++r)
        for (int32_t c = 1; c <= 12; ++c) {
            const bool marked = (r <= 12 && c == r) || r == 14;
            EXPECT_EQ(s(r, c), marked ? 4 : 0) << r << "," << c;
        }
    EXPECT_EQ(reader.Side1TimingMarks(), 14) << "the blank row counts";
    EXPECT_EQ(scanner->words().back(), "E");
    EXPECT_EQ(scanner->received().substr(scanner->received().size() - 5), framed("E"));
}

TEST_F(EZData, EnableAnswerFaults)
{
    scanner->addSheet(sheetOf({markRow({1})}));
    ASSERT_TRUE(reader.StartReader());

    scanner->overrideAnswer("E", "?\r");
    EXPECT_FALSE(reader.ReadPage());
    expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (ENABLE?).", "ReadPageNCSEZ");

    // The sheet right behind the answer: more than the 2 bytes of the answer are waiting.
    errors.host->reports.clear();
    reader.CancelScan(false);
    scanner->overrideAnswer("E", "G\r !\r");
    EXPECT_FALSE(reader.ReadPage());
    expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (ENABLE1).", "ReadPageNCSEZ");
}

TEST_F(EZData, ByteWithoutTheDataBitInTheSheetIsEnable2)
{
    ASSERT_TRUE(reader.StartReader());
    auto feeder = whileWaitingForTheSheet([&] { scanner->inject("! \x01"); });
    EXPECT_FALSE(reader.ReadPage());
    feeder.join();
    expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (ENABLE2): ! \x01",
                       "ReadPageNCSEZ");
    EXPECT_TRUE(reader.CancelScan());
}

TEST_F(EZData, CancelScanEndsTheWaitForTheSheetQuietly)
{
    ASSERT_TRUE(reader.StartReader());
    auto canceller = whileWaitingForTheSheet([&] { reader.CancelScan(true); });
    EXPECT_FALSE(reader.ReadPage());
    canceller.join();
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(events->side1.empty());
}

TEST_F(EZData, SheetLongerThan150RowsIsARuntimeError)
{
    scanner->addSheet(sheetOf(std::vector<std::vector<int>>(151, markRow({}))));
    ASSERT_TRUE(reader.StartReader());
    EXPECT_FALSE(reader.ReadPage());
    const auto& r = errors.host->only();
    EXPECT_EQ(r.number, 9);
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(r.location, "basNCSEZData.ReadPageNCSEZ");
}

TEST_F(EZData, Model37IsDrivenByTheSameCode)
{
    reader.ReaderType(zebReaderTypeChatsworthACF100);
    scanner->setDecay("0.5");
    scanner->addSheet(sheetOf({markRow({6, 7})}));
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(reader.EndReader());
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "SETDECAY3", "S", "E", "D"}));
    EXPECT_EQ(reader.Side1Array()(1, 6), 6);
    EXPECT_EQ(reader.Side1Array()(1, 7), 6);
    EXPECT_EQ(reader.Side1TimingMarks(), 1);
}

TEST_F(EZData, RejectPageSendsErOrEfByRejecterOncePerSheet)
{
    scanner->addSheet(sheetOf({markRow({1})}));
    scanner->addSheet(sheetOf({markRow({2})}));
    reader.Rejecter(true);
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    reader.RejectPage();
    reader.Rejecter(false);
    ASSERT_TRUE(reader.ReadPage());
    reader.RejectPage();
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "S", "E", "ER", "E", "EF"}));
    EXPECT_EQ(scanner->dispositions(), (Words{"ER", "EF"}));
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(EZData, BatchEndEjectsTheLastSheetWithEf)
{
    scanner->addSheet(sheetOf({markRow({1})}));
    scanner->addSheet(sheetOf({markRow({2})}));
    ASSERT_TRUE(reader.ReadBatch(false, 2));
    EXPECT_EQ(scanner->words(), (Words{"GETCONFIG", "S", "E", "E", "EF", "D"}));
    EXPECT_EQ(scanner->dispositions(), (Words{"next", "EF"}));
    EXPECT_EQ(events->sheets, 2);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(EZData, EjectAnswerFault)
{
    scanner->addSheet(sheetOf({markRow({1})}));
    reader.Rejecter(true);
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    scanner->overrideAnswer("ER", "?\r");
    reader.RejectPage();
    expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (EJECT?).", "RejectPageNCSEZ");
}

TEST_F(EZData, DisableAnswerFaults)
{
    const std::pair<std::string, std::string> answers[] = {
        {"X\r", "DISABLE1"},
        {"", "DISABLE1"}, // silence until the time-out
        {"G", "DISABLE2"},
        {"GG", "DISABLE2"},
    };
    for (const auto& [bytes, step] : answers) {
        SCOPED_TRACE(step);
        errors.host->reports.clear();
        newScanner().overrideAnswer("D", bytes);
        ASSERT_TRUE(reader.StartReader());
        EXPECT_FALSE(reader.EndReader());
        expectDeviceReport("EZData Scanner - Unexpected data returned from scanner (" + step + ").",
                           "CloseReaderNCSEZ");
        EXPECT_EQ(scanner->words().back(), "D");
    }
}

TEST_F(EZData, LocateFindsTheScannerFromPort1Up)
{
    sim::mapPort(1, scanner->path());
    reader.Profiles()->Item("23")->LocateEnabled(true);
    reader.Port(9);
    ASSERT_TRUE(reader.Locate());
    EXPECT_EQ(reader.Port(), 1);
    EXPECT_EQ(scanner->received(), "\x12R7777\x12I00\x12"
                                   "E");
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(EZData, FirmwareTextIsWhatPrecedesGCrTrimmed)
{
    auto profile = reader.Profiles()->Item("23");
    profile->FirmwareEnabled(false);
    std::string firmware;
    EXPECT_FALSE(reader.Firmware(firmware));
    EXPECT_TRUE(scanner->words().empty()) << "not offered: nothing sent";

    profile->FirmwareEnabled(true);
    scanner->setFirmware("  EZData 2.04 ");
    ASSERT_TRUE(reader.Firmware(firmware));
    EXPECT_EQ(firmware, "EZData 2.04");
    EXPECT_EQ(scanner->received(), framed("V"));
    EXPECT_TRUE(errors.host->reports.empty());
}

} // namespace
} // namespace zebreader81::test
