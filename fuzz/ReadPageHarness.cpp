#include "ReadPageHarness.h"

#include "FuzzSupport.h"
#include "ScriptedPeer.h"
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"
#include "drivers/chatsworth/basChatsworth.h"
#include "drivers/ezdata/basNCSEZData.h"
#include "drivers/ncs/basNCS.h"
#include "drivers/pdi/basPeripheralDynamics.h"
#include "drivers/scantron/basScantron.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace zebreader81::fuzz {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int16_t Port = 9;
// Short enough for thousands of runs, long enough for a reply on a loaded machine.
constexpr int32_t TimerMs = 40;
// How long the line must stay quiet both ways before the run is cancelled: well past the
// timer and the drivers' short pauses.
constexpr auto QuietBeforeCancel = 200ms;

SafeArray<int16_t> one(int16_t value)
{
    auto a = SafeArray<int16_t>::vector(1, 1);
    a(1) = value;
    return a;
}

std::shared_ptr<clsZEBReaderWindow> area(int16_t startRow, int16_t numRows, int16_t rowGap, int16_t startCol,
                                         int16_t numCols, int16_t colGap, int16_t page, int16_t orientation)
{
    auto w = std::make_shared<clsZEBReaderWindow>();
    w->StartRow(startRow);
    w->NumRows(numRows);
    w->RowGap(rowGap);
    w->StartCol(startCol);
    w->NumCols(numCols);
    w->ColGap(colGap);
    w->Page(page);
    w->Orientation(orientation);
    return w;
}

struct Rig {
    ScriptedPeer peer;
    clsZEBReader reader;

    explicit Rig(Family family)
    {
        quietHost();
        sim::mapPort(Port, peer.path());
        switch (family) {
        case Family::OpScan: reader.ReaderType(zebReaderTypeNCSOpScan2); break;
        case Family::EZData: reader.ReaderType(zebReaderTypeNCSEZData); break;
        case Family::ScanMark: reader.ReaderType(zebReaderTypeScantronScanMark2000); break;
        case Family::Pdi: reader.ReaderType(zebReaderTypePDIVMR138); break;
        case Family::Chatsworth: reader.ReaderType(zebReaderTypeChatsworthOMR1100); break;
        }
        reader.Port(Port);
        reader.TimeOut(1);
        reader.SleepTime(1);
        reader.RecognitionThreshold(200);
        reader.Side1Rows(one(12));
        reader.Side1Cols(one(48));
        reader.Side2Rows(one(6));
        reader.Side2Cols(one(20));
        reader.Windows()->Add(area(1, 3, 1, 1, 5, 1, 1, 1));
        reader.Windows()->Add(area(4, 2, -1, 10, 3, 2, 2, 0));
        auto& com = Reader::fComm(reader).mscComm;
        com.Handshaking(0);
        com.CommPort(Port);
        com.Settings("9600,N,8,1");
        com.PortOpen(true);
    }

    void options(Family family, uint8_t flags)
    {
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
    }

    bool read(Family family, uint8_t flags)
    {
        switch (family) {
        case Family::OpScan: return basNCS::ReadPageNCS(reader);
        case Family::EZData: return basNCSEZData::ReadPageNCSEZ(reader);
        case Family::ScanMark:
            return (flags & 32) ? basScantron::ReadWindowsST(reader) : basScantron::ReadPageST(reader);
        case Family::Pdi: return basPeripheralDynamics::ReadPagePD(reader);
        case Family::Chatsworth: return basChatsworth::ReadPageCT(reader);
        }
        return false;
    }

    // Leaves the line empty for the next run.
    void settle()
    {
        peer.load({});
        peer.waitIdle(200ms);
        auto& fc = Reader::fComm(reader);
        fc.tmrScan.Enabled(false);
        fc.mscComm.InputLen(0);
        while (fc.mscComm.InBufferCount() > 0)
            fc.mscComm.Input();
    }
};

} // namespace

int runReadPage(Family family, const uint8_t* data, std::size_t size)
{
    static Rig rig(family);
    Input in(data, size);
    const uint8_t flags = in.byte();
    rig.options(family, flags);
    rig.peer.load(ScriptedPeer::slicesOf(in.rest()));
    rig.reader.CancelScan(false);
    Reader::fComm(rig.reader).tmrScan.Interval(TimerMs);

    // The waits without a time-out (hand feeding, a sheet's data) end only by a cancel: it
    // comes once the line has been quiet both ways for a while, as an operator would give up.
    std::atomic<bool> done{false};
    std::thread watchdog([&] {
        auto quietSince = Clock::now();
        std::size_t received = rig.peer.receivedCount();
        while (!done.load()) {
            std::this_thread::sleep_for(2ms);
            const std::size_t now = rig.peer.receivedCount();
            if (now != received || !rig.peer.waitIdle(0ms)) {
                received = now;
                quietSince = Clock::now();
            } else if (Clock::now() - quietSince > QuietBeforeCancel) {
                rig.reader.CancelScan(true);
                return;
            }
        }
    });
    rig.read(family, flags);
    done.store(true);
    watchdog.join();
    rig.settle();
    return 0;
}

} // namespace zebreader81::fuzz
