#include "drivers/scantron/ScanMarkPort.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "drivers/ReaderAccess.h"

#include <chrono>

namespace zebreader81 {

// Longest a flush keeps draining a line that never falls quiet.
constexpr std::chrono::seconds flushLimit{1};

void FlushInputST(clsZEBReader& reader) { wait::drain(Reader::fComm(reader).mscComm, flushLimit); }

namespace scanmark {

void waitTurn(clsZEBReader& reader)
{
    const int32_t sleep = reader.SleepTime();
    Reader::fComm(reader).DoEvents(std::chrono::milliseconds(sleep > 0 ? sleep : 50));
}

FirstByte waitFirstByte(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    auto& com = fc.mscComm;
    fc.tmrScan.Enabled(true);
    while (com.InBufferCount() == 0) {
        waitTurn(reader);
        if (reader.CancelScan()) {
            fc.tmrScan.Enabled(false);
            return FirstByte::Cancelled;
        }
        if (!fc.tmrScan.Enabled())
            return FirstByte::TimedOut;
    }
    fc.tmrScan.Enabled(false);
    return FirstByte::Arrived;
}

std::string takeWaiting(clsZEBReader& reader)
{
    auto& com = Reader::fComm(reader).mscComm;
    com.InputLen(1);
    std::string reply;
    while (com.InBufferCount() > 0)
        reply += com.Input();
    return reply;
}

} // namespace scanmark
} // namespace zebreader81
