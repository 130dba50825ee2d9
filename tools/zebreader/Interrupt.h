// Ctrl-C during a batch: a watcher thread turns SIGINT and SIGTERM into a callback (the
// batch's CancelScan) instead of killing the process, so the port is closed cleanly.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace zebreader::cli {

/// Blocks SIGINT and SIGTERM in the calling thread and every thread it starts later; call
/// before any thread starts, so that only the watcher receives them.
void blockInterrupts();

class InterruptWatcher {
public:
    /// Calls `onInterrupt` on the watcher's thread for every SIGINT or SIGTERM.
    explicit InterruptWatcher(std::function<void()> onInterrupt);
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    /// True once an interrupt arrived.
    bool interrupted() const { return interrupted_; }

private:
    std::function<void()> onInterrupt_;
    std::thread thread_;
    std::atomic<bool> interrupted_{false};
};

} // namespace zebreader::cli
