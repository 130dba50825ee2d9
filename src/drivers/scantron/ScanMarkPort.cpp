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

std::chrono::milliseconds pace(const clsZEBReader& reader)
{
    const int32_t sleep = reader.SleepTime();
    return std::chrono::milliseconds(sleep > 0 ? sleep : 50);
}

wait::Turns turns(const clsZEBReader& reader)
{
    return {.pace = pace(reader), .cancel = true, .watchdog = false};
}

void waitTurn(clsZEBReader& reader) { wait::turn(Reader::fComm(reader), pace(reader)); }

} // namespace scanmark
} // namespace zebreader81
