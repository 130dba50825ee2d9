// Helpers for the fault-injection tests: a guard that ends a read that hangs, and actions
// taken on the simulator's line while the driver waits.
#pragma once

#include "sim/Peer.h"
#include "sim/Sheet.h"
#include "zebreader81/zebreader81.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zebreader81::test {

/// A single-sided sheet of rows x cols cells; `strength(row, col)` (both from 1) gives each cell.
sim::Sheet sheetOf(int rows, int cols, const std::function<int(int, int)>& strength);

/// Bounds one fault case: when the case is not over after `limit` (far beyond any time-out
/// the case uses), it cancels the scan and hangs up the line so that the test ends, and
/// fired() says so.
class HangGuard {
public:
    HangGuard(clsZEBReader& reader, sim::Peer& peer, std::chrono::seconds limit = std::chrono::seconds(20));
    ~HangGuard();
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;
    bool fired() const { return fired_.load(); }

private:
    std::mutex mutex_;
    std::condition_variable over_;
    bool done_ = false;
    std::atomic<bool> fired_{false};
    std::thread thread_;
};

/// Runs `action` on its own thread once the peer has put `total` bytes on the line in all
/// (or `after` that, when given), as a scanner failing in the middle of a reply would.
class OnLine {
public:
    OnLine(sim::Peer& peer, std::size_t total, std::function<void()> action,
           std::chrono::milliseconds after = std::chrono::milliseconds(50));
    ~OnLine();
    OnLine(const OnLine&) = delete;
    OnLine& operator=(const OnLine&) = delete;

private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace zebreader81::test
