// The reading cycle driven by a scripted driver family (no port: a USB model): the events a
// host sees and the driver calls, in order.
#include "support/ScriptedFamily.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <tuple>

namespace zebreader81::test {
namespace {

using namespace std::string_literals;

std::string joined(const std::vector<std::string>& items)
{
    std::string out;
    for (const auto& item : items)
        out += (out.empty() ? "" : " ") + item;
    return out;
}

struct Cycle : ::testing::Test {
    HostScope errors;
    ScriptedFamily family{Family::SekonicUSB};
    clsZEBReader reader;
    std::shared_ptr<RecordingEvents> events = std::make_shared<RecordingEvents>();

    Cycle()
    {
        reader.ReaderType(zebReaderTypeSekonicSR2300);
        reader.Advise(events);
    }
    std::string log() const { return joined(events->log); }
    std::string calls() const { return joined(family.calls); }
};

TEST_F(Cycle, ReadPageRaisesEventsInOrderAndReadsBackOnlyWhatItShould)
{
    family.reads = {true, true, true};
    reader.Printer()->Enabled(true);
    reader.Printer()->Active(true);
    events->onReadSheet = [](int sheet, bool& reject) { reject = sheet == 1; };
    events->onAfterSheet = [](int sheet, bool& cancel) { cancel = sheet == 1; };

    ASSERT_TRUE(reader.ReadPage(true));
    // BeforeSheet gets the imprinter's state; the handler flips it, which must not count.
    EXPECT_EQ(log(), "BeforeSheet(True) ReadSheet(False) BeforePrint AfterSheet(False)");
    EXPECT_TRUE(events->beforePrintCancelIn.at(0)) << "bCancel defaults to the ReadSheet bReject";
    EXPECT_EQ(calls(), "read print(skip)");
    EXPECT_TRUE(reader.CancelScan()) << "AfterSheet's bCancelScan is stored";
    EXPECT_EQ(events->side1.at(0)(1, 1), 1);

    // Printing, and AfterPrint, only when initialized and active.
    reader.CancelScan(false);
    events->log.clear();
    ASSERT_TRUE(reader.ReadPage(true));
    EXPECT_EQ(log(), "BeforeSheet(True) ReadSheet(False) BeforePrint AfterPrint AfterSheet(False)");
    events->log.clear();
    ASSERT_TRUE(reader.ReadPage(false));
    EXPECT_EQ(log(), "BeforeSheet(False) ReadSheet(False) AfterSheet(False)");
    EXPECT_EQ(calls(), "read print(skip) read print read");
}

TEST_F(Cycle, CancelScanOrAFailedReadEndTheSheetEarlyAndACountNeverWraps)
{
    reader.CancelScan(true);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(log(), "BeforeSheet(False)");
    EXPECT_EQ(calls(), "");

    reader.CancelScan(false);
    family.reads = {false};
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(log(), "BeforeSheet(False) BeforeSheet(False)");
    EXPECT_EQ(calls(), "read");
    EXPECT_TRUE(reader.CancelScan());

    // A sheet count that would overflow is reported, not wrapped.
    reader.CancelScan(false);
    family.reads = {false, true};
    int32_t count = INT32_MAX;
    EXPECT_FALSE(reader.ReadBatch(false, -1, count));
    EXPECT_EQ(count, INT32_MAX);
    EXPECT_EQ(std::tie(errors.host->only().number, errors.host->only().location),
              std::tuple(6, "clsZEBReader.ReadBatch"s));
}

TEST(ReadBatch, CountsEndsAndRoutesTheLastSheet)
{
    struct Case {
        const char* what;
        const char* reads;                    // 1 a sheet read, 0 a failed read
        int32_t sheets, countIn, cancelAfter; // AfterSheet cancels after sheet cancelAfter
        bool rejectInReadSheet, cancelBefore, initResult, ok;
        int32_t countOut;
        const char* calls;
    };
    const Case cases[] = {
        {"zero sheets", "", 0, 0, 0, false, false, true, true, 0, "init close"},
        {"counts on from the count passed in", "111", 7, 5, 0, false, false, true, true, 7,
         "init read read eject close"},
        {"a failed read ends it and counts", "10", -1, 0, 0, false, false, true, true, 2,
         "init read read close"},
        {"AfterSheet cancels", "111", -1, 0, 2, false, false, true, true, 2, "init read read eject close"},
        {"a rejected sheet is not ejected", "1", 1, 0, 0, true, false, true, true, 1,
         "init read reject close"},
        {"CancelScan is not cleared", "1", -1, 0, 0, false, true, true, true, 0, "init close"},
        {"a failed start", "", -1, 0, 0, false, false, false, false, 0, "init close"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ScriptedFamily family(Family::SekonicUSB);
        for (const char* r = c.reads; *r; ++r)
            family.reads.push_back(*r == '1');
        family.initResult = c.initResult;
        clsZEBReader reader;
        reader.ReaderType(zebReaderTypeSekonicSR2300);
        auto events = std::make_shared<RecordingEvents>();
        events->onAfterSheet = [&](int sheet, bool& cancel) { cancel = sheet == c.cancelAfter; };
        if (c.rejectInReadSheet)
            events->onReadSheet = [&](int, bool&) { reader.RejectPage(); };
        reader.Advise(events);
        reader.CancelScan(c.cancelBefore);
        int32_t count = c.countIn;
        EXPECT_EQ(reader.ReadBatch(false, c.sheets, count), c.ok);
        EXPECT_EQ(count, c.countOut);
        EXPECT_EQ(joined(family.calls), c.calls);
        EXPECT_EQ(reader.CancelScan(), c.sheets != 0) << "stays True after a batch that ran";
    }
}

TEST_F(Cycle, RejectAndEjectSendOneCommandAndNoneOnceClosed)
{
    family.reads = {true, true};
    events->onReadSheet = [this](int, bool&) {
        reader.RejectPage();
        reader.RejectPage();
        reader.EjectPage();
    };
    ASSERT_TRUE(reader.ReadPage());
    events->onReadSheet = nullptr;
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    reader.AnswerKey(std::make_shared<HostObject>());
    EXPECT_TRUE(reader.EndReader());
    EXPECT_EQ(reader.AnswerKey(), nullptr) << "EndReader releases the answer key";
    reader.RejectPage();
    reader.EjectPage();
    EXPECT_EQ(calls(), "read reject init read close");
}

TEST(Routing, SekonicUsbSheetStaysOpenAfterAFailedEject)
{
    HostScope errors;
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeSekonicSR2300);
    {
        ScriptedFamily usb(Family::SekonicUSB);
        usb.reads = {true};
        ASSERT_TRUE(reader.ReadPage());
    }
    reader.CancelScan(true);
    reader.EjectPage(); // the real driver's eject fails: not marked handled
    reader.RejectPage();
    reader.RejectPage();
    const auto& reports = errors.host->reports;
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(std::tie(reports[0].location, reports[1].location, reports[1].description, reports[1].title,
                       reports[1].kind),
              std::tuple("basSekonicSR.EjectPageSR"s, "basSekonicSR.RejectPageSR"s,
                         "The Sekonic SR2300 (USB) scanner is not supported by this version of ZEBReader81."s,
                         "Unsupported Scanner"s, 2));
}

} // namespace
} // namespace zebreader81::test
