#include "Interrupt.h"

#include <csignal>
#include <pthread.h>

namespace zebreader::cli {

namespace {

sigset_t watchedSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGUSR1); // the watcher's own stop signal
    return set;
}

} // namespace

void blockInterrupts()
{
    const sigset_t set = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt) : onInterrupt_(std::move(onInterrupt))
{
    thread_ = std::thread([this] {
        const sigset_t set = watchedSignals();
        for (;;) {
            int sig = 0;
            if (sigwait(&set, &sig) != 0 || sig == SIGUSR1)
                return;
            interrupted_ = true;
            onInterrupt_();
        }
    });
}

InterruptWatcher::~InterruptWatcher()
{
    pthread_kill(thread_.native_handle(), SIGUSR1);
    thread_.join();
}

} // namespace zebreader::cli
