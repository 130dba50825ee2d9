// POSIX WakeSignal: an eventfd, so a poll on the terminal can watch it too.
#include "channel/WakeSignal.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace zebreader81 {

WakeSignal::WakeSignal() : handle_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

WakeSignal::~WakeSignal()
{
    if (handle_ >= 0)
        close(static_cast<int>(handle_));
}

void WakeSignal::set()
{
    if (handle_ >= 0) {
        const uint64_t one = 1;
        [[maybe_unused]] auto n = write(static_cast<int>(handle_), &one, sizeof one);
    }
}

void WakeSignal::clear()
{
    if (handle_ >= 0) {
        uint64_t drained = 0;
        [[maybe_unused]] auto n = read(static_cast<int>(handle_), &drained, sizeof drained);
    }
}

void WakeSignal::wait(std::chrono::milliseconds timeout)
{
    pollfd pfd{static_cast<int>(handle_), POLLIN, 0};
    const int ms = timeout.count() < 0 ? -1 : static_cast<int>(std::min<int64_t>(timeout.count(), 1 << 30));
    [[maybe_unused]] int rc = poll(&pfd, 1, ms);
}

} // namespace zebreader81
