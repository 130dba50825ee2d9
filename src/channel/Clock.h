// The one clock the serial form and the drivers read and sleep on. It is the steady clock,
// unless a thread has installed a VirtualClock: then time on that thread moves only when a
// wait or a pause moves it, at once, so that a test of a slow protocol takes no real time.
#pragma once

#include <chrono>

namespace zebreader81::clock {

using Steady = std::chrono::steady_clock;
using TimePoint = Steady::time_point;

class VirtualClock;

namespace detail {
VirtualClock*& current();
}

/// Time on a clock that stands still while nobody waits; installed on the thread that
/// makes it, for its life.
class VirtualClock {
public:
    VirtualClock();
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    TimePoint now() const { return now_; }
    /// Moves time on to `t` (never back).
    void advanceTo(TimePoint t)
    {
        if (t > now_)
            now_ = t;
    }
    void advance(Steady::duration d) { advanceTo(now_ + d); }
    /// Time since the clock was made.
    Steady::duration elapsed() const { return now_ - start_; }

private:
    TimePoint start_;
    TimePoint now_;
    VirtualClock* previous_;
};

/// The virtual clock of this thread, if one is installed.
inline VirtualClock* virtualClock() { return detail::current(); }

inline TimePoint now()
{
    const VirtualClock* v = virtualClock();
    return v ? v->now() : Steady::now();
}

/// A fixed pause: a virtual clock just moves on.
void sleepFor(std::chrono::milliseconds d);

} // namespace zebreader81::clock
