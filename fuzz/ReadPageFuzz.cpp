// A whole ReadPage of one family (ZEBREADER_FUZZ_FAMILY) against a scanner that knows no
// protocol: every chunk the driver sends is answered with the next slice of the fuzzer's bytes.
// The line is in memory and time is virtual, so a run takes no real time whatever it waits for.
#include "FuzzSupport.h"
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "drivers/chatsworth/basChatsworth.h"
#include "drivers/ezdata/basNCSEZData.h"
#include "drivers/ncs/basNCS.h"
#include "drivers/pdi/basPeripheralDynamics.h"
#include "drivers/scantron/basScantron.h"
#include "sim/Peer.h"
#include "zebreader81/zebreader81.h"

#include <array>
#include <memory>
#include <vector>

using namespace zebreader81;
using namespace std::chrono_literals;

namespace {

enum class Family { OpScan, EZData, ScanMark, Pdi, Chatsworth };
constexpr Family family = Family::ZEBREADER_FUZZ_FAMILY;

constexpr int16_t Port = 9;
constexpr int32_t TimerMs = 40;
// The waits without a time-out (hand feeding, a sheet's data) end only by a cancel: it comes
// once the line has been quiet both ways this long, as an operator would give up.
constexpr auto QuietBeforeCancel = 200ms;
// The most that the pauses of one script may add up to.
constexpr std::chrono::milliseconds MaxPauses{1500};

// The input after its first byte, cut into slices. Each starts with a head byte: below 128, the
// length of a slice that answers the next command; from 128, a pause byte (10 ms units, modulo
// 64) follows, then (head - 128) bytes that go out after that pause without waiting for a
// command, as a sheet's data follows the answer to the command that started it.
class ScriptedPeer : public sim::Peer {
public:
    ScriptedPeer() : Peer(sim::Transport::Memory) { setRecording(false); }

    struct Slice {
        std::string bytes;
        bool follows = false;
        std::chrono::milliseconds pause{0};
    };

    void load(fuzz::Input& in)
    {
        std::lock_guard lock(stateMutex);
        forget();
        std::chrono::milliseconds pauses{0};
        while (!in.empty()) {
            const uint8_t head = in.byte();
            Slice slice{{}, head >= 128};
            if (slice.follows) {
                slice.pause = std::chrono::milliseconds(10 * (in.byte() % 64));
                // Past the budget the pauses vanish: a run stays short whatever the input.
                if (pauses + slice.pause > MaxPauses)
                    slice.pause = 0ms;
                pauses += slice.pause;
            }
            slice.bytes = in.bytes(slice.follows ? head - 128u : head);
            slices_.push_back(std::move(slice));
        }
    }

    void forget()
    {
        std::lock_guard lock(stateMutex);
        slices_.clear();
        next_ = 0;
        ++run_;
    }

    // Cancels this run's read once nothing has crossed the line for QuietBeforeCancel.
    void cancelWhenQuiet(clsZEBReader& reader, std::size_t heard = ~std::size_t(0))
    {
        whenReceived(
            0,
            [this, &reader, heard, run = run_] {
                const auto now = receivedCount();
                if (run != run_)
                    return;
                if (now == heard && waitIdle(0ms))
                    reader.CancelScan(true);
                else
                    cancelWhenQuiet(reader, now);
            },
            QuietBeforeCancel);
    }

protected:
    void onReceive(std::string_view) override
    {
        if (next_ >= slices_.size())
            return;
        send(slices_[next_++].bytes);
        for (; next_ < slices_.size() && slices_[next_].follows; ++next_)
            sendAfter(slices_[next_].pause, slices_[next_].bytes);
    }

private:
    std::vector<Slice> slices_;
    std::size_t next_ = 0;
    unsigned run_ = 0;
};

SafeArray<int16_t> one(int16_t value)
{
    auto a = SafeArray<int16_t>::vector(1, 1);
    a(1) = value;
    return a;
}

// One line and one open reader per process.
struct Rig {
    sim::MemoryLines lines;
    ScriptedPeer peer;
    clsZEBReader reader;

    Rig()
    {
        // Reports go to a message box that shows nothing: stderr stays free of them.
        SetMessageBoxHook([](const std::string&, const std::string&, int32_t) {});
        sim::mapPort(Port, peer.path());
        const zebReaderType types[] = {zebReaderTypeNCSOpScan2, zebReaderTypeNCSEZData,
                                       zebReaderTypeScantronScanMark2000, zebReaderTypePDIVMR138,
                                       zebReaderTypeChatsworthOMR1100};
        reader.ReaderType(types[static_cast<int>(family)]);
        reader.Port(Port);
        reader.TimeOut(1);
        reader.SleepTime(1);
        reader.RecognitionThreshold(200);
        reader.Side1Rows(one(12));
        reader.Side1Cols(one(48));
        reader.Side2Rows(one(6));
        reader.Side2Cols(one(20));
        // Two windows: start row, rows, row gap, start column, columns, column gap, page, orientation.
        for (const auto& a : {std::array<int16_t, 8>{1, 3, 1, 1, 5, 1, 1, 1}, {4, 2, -1, 10, 3, 2, 2, 0}}) {
            auto w = std::make_shared<clsZEBReaderWindow>();
            w->StartRow(a[0]);
            w->NumRows(a[1]);
            w->RowGap(a[2]);
            w->StartCol(a[3]);
            w->NumCols(a[4]);
            w->ColGap(a[5]);
            w->Page(a[6]);
            w->Orientation(a[7]);
            reader.Windows()->Add(w);
        }
        auto& com = Reader::fComm(reader).mscComm;
        com.Handshaking(0);
        com.CommPort(Port);
        com.Settings("9600,N,8,1");
        com.PortOpen(true);
    }
};

} // namespace

ZEBREADER_FUZZ(in)
{
    static Rig rig;
    auto& reader = rig.reader;
    auto& fc = Reader::fComm(reader);
    // The family's options (feeder, duplex, window mode...) from the input's first byte.
    const uint8_t flags = in.byte();
    reader.Feeder((flags & 1) != 0);
    reader.Duplex((flags & 2) != 0);
    reader.DuplexForm((flags & 2) != 0);
    reader.Rejecter((flags & 4) != 0);
    reader.ReaderGrade(family == Family::OpScan && (flags & 8) != 0);
    basScantron::ScanMarkCharBase = (flags & 16) ? 0 : 48;
    // The ALS AccelScan keeps its card for the host; the OMR1100 sends it out at once.
    if (family == Family::Chatsworth)
        reader.ReaderType((flags & 8) ? zebReaderTypeChatsworthALSAccelScanOMR
                                      : zebReaderTypeChatsworthOMR1100);

    rig.peer.load(in);
    reader.CancelScan(false);
    fc.tmrScan.Interval(TimerMs);
    rig.peer.cancelWhenQuiet(reader);
    switch (family) {
    case Family::OpScan: basNCS::ReadPageNCS(reader); break;
    case Family::EZData: basNCSEZData::ReadPageNCSEZ(reader); break;
    case Family::ScanMark:
        (flags & 32) ? basScantron::ReadWindowsST(reader) : basScantron::ReadPageST(reader);
        break;
    case Family::Pdi: basPeripheralDynamics::ReadPagePD(reader); break;
    case Family::Chatsworth: basChatsworth::ReadPageCT(reader); break;
    }

    // Leaves the line empty for the next run.
    rig.peer.forget();
    rig.peer.waitIdle(10s);
    fc.tmrScan.Enabled(false);
    fc.mscComm.InputLen(0);
    while (fc.mscComm.InBufferCount() > 0)
        fc.mscComm.Input();
}
