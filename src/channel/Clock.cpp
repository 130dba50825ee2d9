#include "channel/Clock.h"

#include <thread>

namespace zebreader81::clock {

namespace detail {
VirtualClock*& current()
{
    // A function, not an exported variable, so that every module of a DLL sees one slot.
    thread_local VirtualClock* clock = nullptr;
    return clock;
}
} // namespace detail

// It starts from the real time, so that time points from before it still compare sensibly.
VirtualClock::VirtualClock() : start_(Steady::now()), now_(start_), previous_(detail::current())
{
    detail::current() = this;
}

VirtualClock::~VirtualClock() { detail::current() = previous_; }

void sleepFor(std::chrono::milliseconds d)
{
    if (d.count() <= 0)
        return;
    if (VirtualClock* v = virtualClock())
        v->advance(d);
    else
        std::this_thread::sleep_for(d);
}

} // namespace zebreader81::clock
