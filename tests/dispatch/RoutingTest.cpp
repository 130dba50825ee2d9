// Routing by model: which procedure each family's rules reach, reject and eject per model,
// the families without a protocol, and the display names. (Which read a ScanMark form gets and
// what each family's close answers are checked end to end beside each family.)
#include "channel/frmComm.h"
#include "sim/Peer.h"
#include "support/ScriptedFamily.h"
#include "support/SilentScanner.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zebreader81::test {
namespace {

using Strings = std::vector<std::string>;

bool reportedAt(const RecordingHost& host, const std::string& location)
{
    return std::any_of(host.reports.begin(), host.reports.end(),
                       [&](const Report& r) { return r.location == location; });
}

struct Dispatch : ::testing::Test {
    HostScope errors;
    clsZEBReader reader;
    Dispatch() { reader.TimeOut(1); }
};

TEST_F(Dispatch, SekonicSerialPrintsWhateverSkipAndMarksTheSheetBySkip)
{
    reader.ReaderType(zebReaderTypeScanningSystemsSR601);
    bool disposed = false;
    EXPECT_FALSE(basRead::ReaderPrint(reader, true, disposed));
    EXPECT_TRUE(reportedAt(*errors.host, "basScanningSystems.PrintSS"));
    EXPECT_TRUE(disposed);

    disposed = true;
    basRead::ReaderPrint(reader, false, disposed);
    EXPECT_FALSE(disposed);

    // The SR-410 has no imprinter: nothing is called and the flag stays.
    errors.host->reports.clear();
    reader.ReaderType(zebReaderTypeScanningSystemsSR410);
    EXPECT_FALSE(basRead::ReaderPrint(reader, false, disposed));
    EXPECT_FALSE(disposed);
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST_F(Dispatch, PrintOnlyForTypesTwoTo36WithAnImprinterAndNotSkipped)
{
    ScriptedFamily scanMark{Family::ScanMark};
    reader.ReaderType(zebReaderTypeScantronScanMark2000);
    bool disposed = false;
    EXPECT_TRUE(basRead::ReaderPrint(reader, false, disposed));
    EXPECT_EQ(scanMark.calls, (Strings{"print"}));

    // Sekonic USB: the imprinter is reached through the reader's printer object.
    reader.ReaderType(zebReaderTypeSekonicSR6500);
    EXPECT_FALSE(basRead::ReaderPrint(reader, false, disposed));
    EXPECT_TRUE(reportedAt(*errors.host, "basSekonicSR.PrintSR"));
    errors.host->reports.clear();
    EXPECT_FALSE(basRead::ReaderPrint(reader, true, disposed));
    EXPECT_TRUE(errors.host->reports.empty()) << "skip: nothing sent";

    for (auto type : {zebReaderTypeAppersonAdvantageLink, zebReaderTypeChatsworthACF100,
                      zebReaderTypeAppersonGradeMaster, zebReaderTypeNCSEZData, zebReaderTypePDIVMR138,
                      zebReaderTypeChatsworthALSAccelScanOMR, static_cast<zebReaderType>(42)}) {
        reader.ReaderType(type);
        EXPECT_FALSE(basRead::ReaderPrint(reader, false, disposed)) << type;
    }
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_FALSE(disposed);
}

TEST_F(Dispatch, FamiliesWithoutAProtocolSayTheyAreNotSupported)
{
    const std::pair<zebReaderType, const char*> cases[] = {
        {zebReaderTypeAppersonBenchMark3000, "basApperson.InitReaderAP"},
        {zebReaderTypeScanningSystemsSR700352, "basScanningSystems.InitReaderSS"},
        {zebReaderTypeSekonicSR3500, "basSekonicSR.InitReaderSR"},
    };
    SilentScanner scanner;
    sim::mapPort(16, scanner.path());
    reader.Port(16);
    reader.DataBits(zebReaderDataBits8);
    for (auto [type, location] : cases) {
        SCOPED_TRACE(location);
        errors.host->reports.clear();
        reader.CancelScan(false);
        reader.ReaderType(type);
        EXPECT_FALSE(basRead::ReaderInit(reader));
        const auto& r = errors.host->only();
        EXPECT_EQ(r.description, "The " + basRead::ReaderTypeName(type) +
                                     " scanner is not supported by this version of ZEBReader81.");
        EXPECT_EQ(r.title, "Unsupported Scanner");
        EXPECT_EQ(r.kind, 2);
        EXPECT_EQ(r.location, location);
        EXPECT_TRUE(reader.CancelScan());
        basRead::ReaderClose(reader);
    }
    EXPECT_TRUE(scanner.received().empty());

    // The argument-less close names the model that was opened.
    errors.host->reports.clear();
    reader.ReaderType(zebReaderTypeScanningSystemsSR607);
    basRead::ReaderInit(reader);
    basRead::ReaderClose(reader);
    ASSERT_EQ(errors.host->reports.size(), 2u);
    EXPECT_EQ(errors.host->reports[1].location, "basScanningSystems.CloseReaderSS");
    EXPECT_EQ(errors.host->reports[1].description,
              "The Sekonic SR-607 scanner is not supported by this version of ZEBReader81.");
}

} // namespace
} // namespace zebreader81::test
