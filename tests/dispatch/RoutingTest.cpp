// ReaderInit, ReaderRead and ReaderClose around a scripted family (port check, line settings,
// time-out, CancelScan), and routing by model: which procedure each family's rules reach, the
// families without a protocol. (Which read a ScanMark form gets and what each family's close
// answers are checked end to end beside each family.)
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
    ScriptedFamily family{Family::OpScan};
    SilentScanner scanner;
    clsZEBReader reader;

    Dispatch()
    {
        sim::mapPort(16, scanner.path());
        reader.ReaderType(zebReaderTypeNCSOpScan2);
        reader.Port(16);
        reader.BaudRate(zebReaderBaudRate9600);
        reader.Parity("N");
        reader.DataBits(zebReaderDataBits8);
        reader.StopBits(1.0f);
        reader.FlowControl(zebReaderFlowControlNone);
        reader.TimeOut(1);
    }
    SerialControl& com() { return Reader::fComm(reader).mscComm; }
};

using Init = Dispatch;

TEST_F(Init, PortOpensWithTheReadersLineSettingsThenTheFamilyInitsAndTypeNoneFails)
{
    reader.FlowControl(zebReaderFlowControlHardware);
    reader.BaudRate(zebReaderBaudRate19200);
    reader.StopBits(2.0f); // written as a Single
    ASSERT_TRUE(basRead::ReaderInit(reader));
    EXPECT_EQ(com().CommPort(), 16);
    EXPECT_EQ(com().Settings(), "19200,N,8,2");
    EXPECT_EQ(com().Handshaking(), 2);
    EXPECT_FALSE(reader.CancelScan());
    EXPECT_TRUE(basRead::ReaderClose(reader));
    EXPECT_FALSE(com().PortOpen());
    EXPECT_EQ(family.calls, (Strings{"init", "close"}));

    // Type 0 fails init and read, but close still closes the port.
    reader.ReaderType(zebReaderTypeNone);
    EXPECT_FALSE(basRead::ReaderInit(reader));
    EXPECT_TRUE(reader.CancelScan());
    EXPECT_TRUE(com().PortOpen()) << "type 0 has a serial profile, so its port opens";
    reader.CancelScan(false);
    EXPECT_FALSE(basRead::ReaderRead(reader));
    EXPECT_TRUE(reader.CancelScan());
    EXPECT_FALSE(basRead::ReaderClose(reader));
    EXPECT_FALSE(com().PortOpen());
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_TRUE(scanner.received().empty());

    // Parity goes in as stored; 1.5 stop bits only go with 5 data bits on a real line. (A
    // pseudo-terminal refuses these, so they are not applied to an open port.)
    reader.StopBits(1.5f);
    EXPECT_EQ(basRead::SettingsText(reader), "19200,N,8,1.5");
    reader.Parity("E");
    reader.DataBits(zebReaderDataBits7);
    reader.BaudRate(zebReaderBaudRate38400);
    reader.StopBits(2.0f);
    EXPECT_EQ(basRead::SettingsText(reader), "38400,E,7,2");
}

TEST_F(Init, UsbModelSkipsThePortAndATimeOutOutsideOneTo600BecomesTenSeconds)
{
    ScriptedFamily usb{Family::SekonicUSB};
    reader.ReaderType(zebReaderTypeSekonicSR2300);
    reader.Port(0);
    for (auto [given, kept] : {std::pair{0, 10}, {601, 10}, {-5, 10}, {600, 600}, {1, 1}}) {
        SCOPED_TRACE(given);
        reader.TimeOut(given);
        ASSERT_TRUE(basRead::ReaderInit(reader));
        EXPECT_EQ(reader.TimeOut(), kept);
        EXPECT_EQ(Reader::fComm(reader).tmrScan.Interval(), kept * 1000);
    }
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_FALSE(com().PortOpen());
    EXPECT_EQ(usb.calls, (Strings{"init", "init", "init", "init", "init"}));
}

TEST_F(Dispatch, PrintOnlyForTypesTwoTo36WithAnImprinterAndSekonicSerialMarksTheSheetBySkip)
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

    ScriptedFamily scanMark{Family::ScanMark};
    reader.ReaderType(zebReaderTypeScantronScanMark2000);
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
