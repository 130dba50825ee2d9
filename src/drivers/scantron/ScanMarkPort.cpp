#include "drivers/scantron/ScanMarkPort.h"

#include "channel/frmComm.h"
#include "engine/ReaderAccess.h"

namespace zebreader81::scanmark {

FirstByte waitFirstByte(clsZEBReader& reader)
{
    auto& fc = Reader::fComm(reader);
    auto& com = fc.mscComm;
    fc.tmrScan.Enabled(true);
    while (com.InBufferCount() == 0) {
        fc.DoEvents();
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

} // namespace zebreader81::scanmark
