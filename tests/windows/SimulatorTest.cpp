// The Windows build against a Linux simulator program on a pseudo-terminal that Wine maps to
// COM<ZEBREADER_TEST_PORT> (with-simulator sets both up); ZEBREADER_TEST_MODEL is the model
// it simulates. The reader reads the sample sheets mark for mark; the serial control is
// exercised on the same line.
#include "channel/frmComm.h"
#include "core/basError.h"
#include "sim/SheetFile.h"
#include "sim/samples/Samples.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace zebreader81::test {
namespace {

// The reports a failed call left, for the failure message.
std::string reportsOf(const RecordingHost& host)
{
    std::string text;
    for (const auto& r : host.reports)
        text += "\n  " + std::to_string(r.number) + " " + r.description + " at " + r.location;
    return text;
}

// Sets the form up for the sheets as the simulator's own hint does: their size, both sides
// when any sheet has two, barcodes when any has one.
void fitTo(clsZEBReader& reader, const std::vector<sim::Sheet>& sheets)
{
    const auto size = sim::measureSheets(sheets);
    const auto one = [](std::size_t v) {
        auto a = SafeArray<int16_t>::vector(0, 1);
        a(1) = static_cast<int16_t>(v);
        return a;
    };
    reader.Side1Rows(one(size.rows1));
    reader.Side1Cols(one(size.cols1));
    reader.Side2Rows(one(size.rows2));
    reader.Side2Cols(one(size.cols2));
    reader.Duplex(size.rows2 > 0);
    reader.DuplexForm(size.rows2 > 0);
    reader.Barcode(size.barcodes);
}

int errorOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const RuntimeError& e) {
        return e.number();
    }
    return 0;
}

struct Reading : ::testing::Test {
    const char *simulated = std::getenv("ZEBREADER_TEST_MODEL"), *mapped = std::getenv("ZEBREADER_TEST_PORT");
    const int model = simulated ? std::atoi(simulated) : 0, port = mapped ? std::atoi(mapped) : 0;
    void SetUp() override
    {
        if (model == 0 || port == 0)
            GTEST_SKIP() << "needs a simulator: run through with-simulator";
    }
};

TEST_F(Reading, TheSampleSheetsArriveMarkForMark)
{
    // The cards suit the narrow scanners (PDI and EZData), the sheets the others.
    const bool cards = model == 23 || model == 24 || model == 37;
    const auto samples = sim::parseSheets(cards ? sim::samples::answerCards : sim::samples::answerSheets);
    HostScope errors;
    clsZEBReader reader;
    auto events = std::make_shared<RecordingEvents>();
    ASSERT_TRUE(reader.LoadDefaults(static_cast<zebReaderType>(model)));
    reader.Port(static_cast<int16_t>(port));
    reader.TimeOut(2);
    reader.SleepTime(1);
    reader.Feeder(true);
    fitTo(reader, samples);
    reader.Advise(events);

    int32_t count = 0;
    ASSERT_TRUE(reader.ReadBatch(false, static_cast<int32_t>(samples.size()), count))
        << reportsOf(*errors.host);
    EXPECT_TRUE(errors.host->reports.empty()) << reportsOf(*errors.host);
    ASSERT_EQ(count, static_cast<int32_t>(samples.size()));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto& side1 = events->side1[i];
        int marked = 0;
        for (std::size_t row = 0; row < samples[i].side1.size(); ++row)
            for (std::size_t col = 0; col < samples[i].side1[row].size(); ++col) {
                const bool mark = samples[i].side1[row][col] > 0;
                ASSERT_EQ(side1(static_cast<int32_t>(row + 1), static_cast<int32_t>(col + 1)) > 0, mark)
                    << "sheet " << i + 1 << " row " << row + 1 << " column " << col + 1;
                marked += mark;
            }
        EXPECT_GT(marked, 50);
    }
}

TEST_F(Reading, TheEZDataProbeAndFirmwareQueryFindTheScanner)
{
    if (model != 23)
        GTEST_SKIP() << "EZData only";
    HostScope errors;
    clsZEBReader reader;
    ASSERT_TRUE(reader.LoadDefaults(zebReaderTypeNCSEZData));
    ASSERT_TRUE(reader.Locate(static_cast<int16_t>(port))) << reportsOf(*errors.host);
    EXPECT_EQ(reader.Port(), port);
    // The table offers no firmware query for this model; the simulator answers one.
    reader.Profiles()->Item("23")->FirmwareEnabled(true);
    std::string firmware;
    ASSERT_TRUE(reader.Firmware(firmware)) << reportsOf(*errors.host);
    EXPECT_FALSE(firmware.empty());
    EXPECT_TRUE(errors.host->reports.empty()) << reportsOf(*errors.host);
}

TEST_F(Reading, TheSerialControlRaisesItsErrorsAndItsWaitsBlockUntilWakeOrTimer)
{
    frmComm fc;
    auto& com = fc.mscComm;
    com.CommPort(99); // no such device in the prefix
    EXPECT_EQ(errorOf([&] { com.PortOpen(true); }), err::InvalidPortNumber);
    EXPECT_EQ(errorOf([&] { com.InBufferCount(); }), err::DeviceNotOpen);

    com.CommPort(static_cast<int16_t>(port));
    com.PortOpen(true);
    EXPECT_EQ(errorOf([&] { com.CommPort(1); }), err::PortAlreadyOpen);
    // A rate the line cannot run, and data bits it cannot carry; the settings stay.
    EXPECT_EQ(errorOf([&] { com.Settings("12345,N,8,1"); }), err::CommStateNotSet);
    EXPECT_EQ(errorOf([&] { com.Settings("9600,N,4,1"); }), err::CommStateNotSet);
    EXPECT_EQ(com.Settings(), "9600,N,8,1");
    // Framing a pseudo-terminal cannot hold, asked for again: the second time nothing changes.
    for (const char* settings : {"9600,E,7,1", "9600,E,7,1", "38400,O,7,2", "38400,O,7,2"})
        EXPECT_EQ(errorOf([&] { com.Settings(settings); }), 0) << settings;
    for (int16_t handshaking = 3; handshaking >= 0; --handshaking)
        EXPECT_EQ(errorOf([&] { com.Handshaking(handshaking); }), 0) << handshaking;

    // Nothing was asked, so the line stays quiet: only the timer ends this wait.
    fc.tmrScan.Interval(300);
    fc.tmrScan.Enabled(true);
    int turns = 0;
    while (com.InBufferCount() == 0 && fc.tmrScan.Enabled()) {
        fc.DoEvents();
        ++turns;
    }
    EXPECT_FALSE(fc.tmrScan.Enabled());
    EXPECT_LT(turns, 10) << "a wait must block, not spin";
    // A wake from another thread ends a wait that has no limit.
    std::thread waker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        fc.Wake();
    });
    fc.DoEvents();
    waker.join();
    EXPECT_EQ(com.InBufferCount(), 0);
    com.PortOpen(false);
}

} // namespace
} // namespace zebreader81::test
