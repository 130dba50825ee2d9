#include "channel/Waits.h"

#include "channel/Clock.h"
#include "channel/frmComm.h"

namespace zebreader81::wait {

Outcome awaitBytes(frmComm& fc, int16_t count, const Turns& turns)
{
    auto& com = fc.mscComm;
    if (!turns.watchdog)
        fc.tmrScan.Enabled(true);
    auto done = [&](Outcome outcome) {
        if (!turns.watchdog)
            fc.tmrScan.Enabled(false);
        return outcome;
    };
    for (;;) {
        if (com.InBufferCount() >= count)
            return done(Outcome::Arrived);
        // Looked at before a turn: a turn without the timer could block until input.
        if (!fc.tmrScan.Enabled())
            return done(Outcome::TimedOut);
        fc.DoEvents(turns.pace);
        if (turns.cancel && fc.cancelRequested())
            return done(Outcome::Cancelled);
    }
}

bool awaitByteUntilCancel(frmComm& fc, const Turns& turns)
{
    while (fc.mscComm.InBufferCount() == 0) {
        if (fc.cancelRequested())
            return false;
        fc.DoEvents(turns.pace);
    }
    return true;
}

bool byteWithin(frmComm& fc, std::chrono::milliseconds grace)
{
    if (fc.mscComm.InBufferCount() > 0)
        return true;
    fc.DoEvents(grace);
    return fc.mscComm.InBufferCount() > 0;
}

void turn(frmComm& fc, std::optional<std::chrono::milliseconds> pace) { fc.DoEvents(pace); }

int16_t waitingAfter(SerialControl& com, int64_t pauseMs)
{
    frmComm::Sleep(pauseMs);
    return com.InBufferCount();
}

std::optional<unsigned char> takeByte(SerialControl& com)
{
    com.InputLen(1);
    const std::string one = com.Input();
    if (one.empty())
        return std::nullopt;
    return static_cast<unsigned char>(one[0]);
}

std::string takeWaiting(SerialControl& com)
{
    com.InputLen(1);
    std::string taken;
    while (com.InBufferCount() > 0)
        taken += com.Input();
    return taken;
}

void drain(SerialControl& com, std::chrono::milliseconds limit)
{
    try {
        const auto until = clock::now() + limit;
        while (com.InBufferCount() > 0 && clock::now() < until)
            com.Input();
        if (com.InBufferCount() == 0)
            com.purgeInput();
    } catch (...) {
    }
}

} // namespace zebreader81::wait
