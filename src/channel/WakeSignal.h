// The platform seam of the serial form. frmComm waits through two things only: a WakeSignal
// (set from any thread, taken by the waiting one) and SerialBackend::waitReadable, which
// blocks on the port and the signal together. A platform supplies both: POSIX an eventfd
// polled beside the terminal (PosixWake.cpp, PosixSerial.cpp); Win32 would put an event
// handle beside an overlapped read. nativeHandle is what its backend waits on.
#pragma once

#include <chrono>
#include <cstdint>

namespace zebreader81 {

class WakeSignal {
public:
    WakeSignal();
    ~WakeSignal();
    WakeSignal(const WakeSignal&) = delete;
    WakeSignal& operator=(const WakeSignal&) = delete;

    /// Sets the signal; safe from any thread.
    void set();
    /// Takes a pending signal, if any, without blocking.
    void clear();
    /// Blocks until the signal is set or `timeout` passes (negative: no limit); leaves it set.
    void wait(std::chrono::milliseconds timeout);
    /// The platform's waitable object (a descriptor on POSIX, an event handle on Win32);
    /// -1 when none could be made, and then the signal never fires.
    intptr_t nativeHandle() const { return handle_; }

private:
    intptr_t handle_ = -1;
};

} // namespace zebreader81
