// ReaderInit, ReaderRead and ReaderClose around a scripted family: port check, line settings,
// time-out, CancelScan.
#include "channel/frmComm.h"
#include "sim/Peer.h"
#include "support/ScriptedFamily.h"
#include "support/SilentScanner.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using Strings = std::vector<std::string>;

struct Init : ::testing::Test {
    HostScope errors;
    ScriptedFamily family{Family::OpScan};
    SilentScanner scanner;
    clsZEBReader reader;

    Init()
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

TEST_F(Init, PortOpensWithTheReadersLineSettingsThenTheFamilyInits)
{
    reader.FlowControl(zebReaderFlowControlHardware);
    reader.BaudRate(zebReaderBaudRate19200);
    reader.StopBits(2.0f); // written as a Single
    ASSERT_TRUE(basRead::ReaderInit(reader));
    EXPECT_TRUE(errors.host->reports.empty());
    EXPECT_EQ(com().CommPort(), 16);
    EXPECT_EQ(com().Settings(), "19200,N,8,2");
    EXPECT_EQ(com().Handshaking(), 2);
    EXPECT_FALSE(reader.CancelScan());
    EXPECT_TRUE(basRead::ReaderClose(reader));
    EXPECT_FALSE(com().PortOpen());
    EXPECT_EQ(family.calls, (Strings{"init", "close"}));

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

TEST_F(Init, TypeNoneFailsInitAndReadButCloseStillClosesThePort)
{
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
}

} // namespace
} // namespace zebreader81::test
