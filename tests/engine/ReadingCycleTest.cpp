// The reading cycle driven by a scripted driver family (no port: a USB model).
#include "support/ScriptedFamily.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using Strings = std::vector<std::string>;

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
};

TEST_F(Cycle, ReadPageRaisesEventsInOrderAndReadsBackOnlyWhatItShould)
{
    family.reads = {true};
    reader.Printer()->Enabled(true);
    reader.Printer()->Active(true);
    events->onReadSheet = [](int, bool& reject) { reject = true; };
    events->onAfterSheet = [](int, bool& cancel) { cancel = true; };

    ASSERT_TRUE(reader.ReadPage(true));
    // BeforeSheet gets the imprinter's state; the handler flips it, which must not count.
    EXPECT_EQ(events->log,
              (Strings{"BeforeSheet(True)", "ReadSheet(False)", "BeforePrint", "AfterSheet(False)"}));
    ASSERT_EQ(events->beforePrintCancelIn.size(), 1u);
    EXPECT_TRUE(events->beforePrintCancelIn[0]) << "bCancel defaults to the ReadSheet bReject";
    EXPECT_EQ(family.calls, (Strings{"read", "print(skip)"}));
    EXPECT_TRUE(reader.CancelScan()) << "AfterSheet's bCancelScan is stored";
    EXPECT_EQ(events->side1.at(0)(1, 1), 1);
}

TEST_F(Cycle, PrintsAndRaisesAfterPrintOnlyWhenInitializedAndActive)
{
    family.reads = {true, true};
    reader.Printer()->Enabled(true);
    reader.Printer()->Active(true);
    ASSERT_TRUE(reader.ReadPage(true));
    EXPECT_EQ(events->log.back(), "AfterSheet(False)");
    EXPECT_EQ(events->log.at(events->log.size() - 2), "AfterPrint");

    events->log.clear();
    ASSERT_TRUE(reader.ReadPage(false));
    EXPECT_EQ(events->log, (Strings{"BeforeSheet(False)", "ReadSheet(False)", "AfterSheet(False)"}));
}

TEST_F(Cycle, CancelScanStopsReadPageAfterBeforeSheet)
{
    reader.CancelScan(true);
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(events->log, (Strings{"BeforeSheet(False)"}));
    EXPECT_TRUE(family.calls.empty());
}

TEST_F(Cycle, FailedReadEndsTheSheetWithoutFurtherEventsAndSetsCancelScan)
{
    family.reads = {false};
    EXPECT_FALSE(reader.ReadPage());
    EXPECT_EQ(events->log, (Strings{"BeforeSheet(False)"}));
    EXPECT_TRUE(reader.CancelScan());
}

TEST_F(Cycle, ReadBatchWithZeroSheetsOpensAndClosesOnly)
{
    EXPECT_TRUE(reader.ReadBatch(false, 0));
    EXPECT_EQ(family.calls, (Strings{"init", "close"}));
}

TEST_F(Cycle, ReadBatchCountsOnFromTheCountPassedInAndEjectsTheLastSheet)
{
    family.reads = {true, true, true};
    int32_t count = 5;
    EXPECT_TRUE(reader.ReadBatch(false, 7, count));
    EXPECT_EQ(count, 7);
    EXPECT_EQ(family.calls, (Strings{"init", "read", "read", "eject", "close"}));
    EXPECT_TRUE(reader.CancelScan()) << "stays True after the batch";
}

TEST_F(Cycle, ReadBatchUnlimitedRunsUntilCancelAndFailedReadsStillCount)
{
    family.reads = {true, false};
    // The failed second read sets CancelScan, which ends the batch.
    int32_t count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, -1, count));
    EXPECT_EQ(count, 2);
    // The last read failed: no eject.
    EXPECT_EQ(family.calls, (Strings{"init", "read", "read", "close"}));
}

TEST_F(Cycle, AfterSheetCancelStopsTheBatchAndEjectsUnlessRejected)
{
    family.reads = {true, true, true};
    events->onAfterSheet = [](int sheet, bool& cancel) { cancel = sheet == 2; };
    int32_t count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, -1, count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(family.calls, (Strings{"init", "read", "read", "eject", "close"}));

    family.calls.clear();
    reader.CancelScan(false);
    events->onReadSheet = [this](int, bool&) { reader.RejectPage(); };
    count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, 1, count));
    EXPECT_EQ(family.calls, (Strings{"init", "read", "reject", "close"}));
}

TEST_F(Cycle, ReadBatchDoesNotClearCancelScan)
{
    family.reads = {true};
    reader.CancelScan(true);
    int32_t count = 0;
    EXPECT_TRUE(reader.ReadBatch(false, -1, count));
    EXPECT_EQ(count, 0);
    EXPECT_EQ(family.calls, (Strings{"init", "close"}));
}

TEST_F(Cycle, FailedStartEndsTheBatch)
{
    family.initResult = false;
    EXPECT_FALSE(reader.ReadBatch());
    EXPECT_EQ(family.calls, (Strings{"init", "close"}));
    EXPECT_TRUE(reader.CancelScan());
}

TEST_F(Cycle, RejectTwiceSendsOneCommand)
{
    family.reads = {true};
    events->onReadSheet = [this](int, bool&) {
        reader.RejectPage();
        reader.RejectPage();
        reader.EjectPage();
    };
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(family.calls, (Strings{"read", "reject"}));
}

TEST_F(Cycle, NothingIsRejectedOrEjectedOnceTheReaderIsClosed)
{
    family.reads = {true};
    ASSERT_TRUE(reader.StartReader());
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_TRUE(reader.EndReader());
    reader.RejectPage();
    reader.EjectPage();
    EXPECT_EQ(family.calls, (Strings{"init", "read", "close"}));
}

TEST_F(Cycle, SheetCountThatWouldOverflowIsReportedNotWrapped)
{
    family.reads = {true};
    int32_t count = INT32_MAX;
    EXPECT_FALSE(reader.ReadBatch(false, -1, count));
    EXPECT_EQ(count, INT32_MAX);
    EXPECT_EQ(errors.host->only().number, 6);
    EXPECT_EQ(errors.host->only().location, "clsZEBReader.ReadBatch");
}

TEST_F(Cycle, EndReaderReleasesTheAnswerKey)
{
    reader.AnswerKey(std::make_shared<HostObject>());
    EXPECT_TRUE(reader.EndReader());
    EXPECT_EQ(reader.AnswerKey(), nullptr);
}

TEST(Routing, RejectAndEjectOfModelsWithoutRoutingOnlyMarkTheSheet)
{
    ScriptedFamily scanMark(Family::ScanMark);
    scanMark.reads = {true};
    clsZEBReader reader;
    reader.ReaderType(zebReaderTypeScantron8000);
    auto events = std::make_shared<RecordingEvents>();
    events->onReadSheet = [&reader](int, bool&) {
        reader.RejectPage();
        reader.EjectPage();
    };
    reader.Advise(events);
    ASSERT_TRUE(reader.ReadPage());
    EXPECT_EQ(scanMark.calls, (Strings{"read"}));
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
    EXPECT_EQ(reports[0].location, "basSekonicSR.EjectPageSR");
    EXPECT_EQ(reports[1].location, "basSekonicSR.RejectPageSR");
    EXPECT_EQ(reports[1].description,
              "The Sekonic SR2300 (USB) scanner is not supported by this version of ZEBReader81.");
    EXPECT_EQ(reports[1].title, "Unsupported Scanner");
    EXPECT_EQ(reports[1].kind, 2);
}

} // namespace
} // namespace zebreader81::test
