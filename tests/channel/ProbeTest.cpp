// The port probe and firmware query, the reader's Locate and Firmware, on memory lines and a
// virtual clock.
#include "channel/ChannelPeers.h"
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "drivers/ezdata/EZDataProbes.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

const std::string GCR{'G', '\r'}, DC2{18};
const std::string probeFrame = DC2 + "R7777" + DC2 + "I00" + DC2 + "E",
                  firmwareFrame = DC2 + "\x1bV" + DC2 + "E";

// A scanner of the probe protocol: it answers the probe and the firmware query, each only when
// it arrives exactly.
struct ProbePeer : LinePeer {
    explicit ProbePeer(std::string probeAnswer = GCR, std::string firmwareAnswer = {})
    {
        answers = {{probeFrame, std::move(probeAnswer)}, {firmwareFrame, std::move(firmwareAnswer)}};
    }
    int probes() const
    {
        const auto chunks = receivedChunks();
        return static_cast<int>(
            std::count_if(chunks.begin(), chunks.end(), [](const auto& c) { return c.bytes == probeFrame; }));
    }
};

struct Probe : ::testing::Test {
    sim::MemoryLines lines;
    HostScope errors;
    PortMap ports;
    clsZEBReader reader;
    SerialControl& com = Reader::fComm(reader).mscComm;

    Probe()
    {
        reader.ReaderType(zebReaderTypeNCSEZData);
        // Set here so that these tests do not hang on the profile table's values.
        reader.Profiles()->Item("23")->LocateEnabled(true);
        reader.Profiles()->Item("23")->FirmwareEnabled(true);
        reader.Parity("E"); // 9600,E,7,1
    }
    ~Probe() override { EXPECT_TRUE(errors.host->reports.empty()) << "probes report nothing"; }

    static std::chrono::steady_clock::time_point firstAt(const sim::Peer& p, std::size_t chunk = 0)
    {
        const auto chunks = p.receivedChunks();
        return chunk < chunks.size() ? chunks[chunk].at : std::chrono::steady_clock::time_point::max();
    }
};

// The probe finds only exactly G CR; the firmware is the trimmed text before the first G CR.
TEST_F(Probe, ProbeAndFirmwareAnswersOnlyForTheProbeModelsWithTheProfileFlag)
{
    struct Case {
        std::string probe, firmware;
        bool found, ok;
        std::string text;
    };
    for (const Case& c :
         {Case{GCR, "  EZ 2.07 b  " + GCR + "more" + GCR, true, true, "EZ 2.07 b"},
          Case{GCR + "X", GCR, false, true, ""}, Case{"X" + GCR, "V3.1\r\n", false, false, "kept"},
          Case{"G", "", false, false, "kept"}, Case{"Gx", "", false, false, "kept"},
          Case{"\rG", "", false, false, "kept"}, Case{"", "", false, false, "kept"}}) {
        SCOPED_TRACE(testing::PrintToString(c.probe));
        ProbePeer peer(c.probe, c.firmware);
        ports.map(6, peer.path());
        int16_t port = 6;
        EXPECT_EQ(LocateNCSEZ(reader, port), c.found);
        EXPECT_EQ(port, 6);
        EXPECT_EQ(peer.received(), probeFrame) << "exactly one 13-byte probe";
        EXPECT_FALSE(com.PortOpen()) << "the probe closes the port again";
        EXPECT_EQ(com.CommPort(), 6);
        EXPECT_EQ(com.Settings(), "9600,E,7,1");
        peer.clearReceived();
        reader.Port(6);
        std::string text = "kept";
        EXPECT_EQ(reader.Firmware(text), c.ok);
        EXPECT_EQ(text, c.text);
        EXPECT_EQ(peer.received(), firmwareFrame);
        EXPECT_FALSE(com.PortOpen());
    }

    // Locate and Firmware only for the probe models with the profile flag.
    ProbePeer peer(GCR, "V1 " + GCR);
    ports.map(1, peer.path());
    struct Model {
        zebReaderType type;
        bool flag, works;
    };
    for (const Model& c :
         {Model{zebReaderTypeNCSEZData, false, false}, Model{zebReaderTypePDIVMR138, true, false},
          Model{zebReaderTypeChatsworthOMR1100, true, true}, Model{zebReaderTypeNCSEZData, true, true}}) {
        SCOPED_TRACE(testing::Message() << c.type << (c.flag ? " with" : " without") << " the flag");
        reader.ReaderType(c.type);
        reader.Profiles()->Item(std::to_string(c.type))->LocateEnabled(c.flag);
        reader.Profiles()->Item(std::to_string(c.type))->FirmwareEnabled(c.flag);
        reader.Port(c.works ? 8 : 1); // where it fails, a scanner waits on the port it would ask
        const auto before = peer.receivedCount();
        std::string text = "unchanged";
        EXPECT_EQ(reader.Locate(1), c.works);
        EXPECT_EQ(reader.Port(), 1);
        EXPECT_EQ(reader.Firmware(text), c.works);
        EXPECT_EQ(text, c.works ? "V1" : "unchanged");
        EXPECT_TRUE(c.works || peer.receivedCount() == before) << "nothing asked";
    }
}

TEST_F(Probe, LocateTriesTheStartPortThenOneToSixteenSkippingMissingAndBusyPorts)
{
    ProbePeer three(""), five(""), busy, nine, twelve;
    ports.map(3, three.path());
    ports.map(5, five.path());
    ports.map(4, busy.path());
    ports.map(9, nine.path());
    ports.map(12, twelve.path());
    frmComm holder;
    holder.mscComm.CommPort(4);
    holder.mscComm.PortOpen(true);

    EXPECT_TRUE(reader.Locate(5));
    EXPECT_EQ(reader.Port(), 9);
    EXPECT_EQ(std::tuple(five.probes(), three.probes(), busy.probes(), nine.probes(), twelve.probes()),
              std::tuple(2, 1, 0, 1, 0))
        << "the search stops at the first scanner";
    EXPECT_TRUE(holder.mscComm.PortOpen());
    EXPECT_LT(firstAt(five, 0), firstAt(three));
    EXPECT_LT(firstAt(three), firstAt(five, 1));
    EXPECT_LT(firstAt(five, 1), firstAt(nine));
    EXPECT_FALSE(com.PortOpen());

    // The start port wins when it answers, even if a lower one would too.
    EXPECT_TRUE(reader.Locate(12));
    EXPECT_EQ(reader.Port(), 12);
    EXPECT_EQ(nine.probes(), 1);
}

} // namespace
} // namespace zebreader81::test
