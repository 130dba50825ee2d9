#include "hardening/FaultSupport.h"

namespace zebreader81::test {

sim::Sheet sheetOf(int rows, int cols, const std::function<int(int, int)>& strength)
{
    sim::Sheet s;
    s.side1.assign(static_cast<std::size_t>(rows), std::vector<int>(static_cast<std::size_t>(cols)));
    for (int r = 1; r <= rows; ++r)
        for (int c = 1; c <= cols; ++c)
            s.side1[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)] = strength(r, c);
    return s;
}

using namespace std::chrono_literals;

HangGuard::HangGuard(clsZEBReader& reader, sim::Peer& peer, std::chrono::seconds limit)
    : thread_([this, &reader, &peer, limit] {
          std::unique_lock lock(mutex_);
          if (over_.wait_for(lock, limit, [this] { return done_; }))
              return;
          fired_ = true;
          reader.CancelScan(true);
          peer.hangUp();
      })
{
}

HangGuard::~HangGuard()
{
    {
        std::lock_guard lock(mutex_);
        done_ = true;
    }
    over_.notify_all();
    thread_.join();
}

OnLine::OnLine(sim::Peer& peer, std::size_t total, std::function<void()> action,
               std::chrono::milliseconds after)
    : thread_([this, &peer, total, action = std::move(action), after] {
          while (!stop_ && peer.sent().size() < total)
              std::this_thread::sleep_for(2ms);
          if (stop_)
              return;
          std::this_thread::sleep_for(after);
          action();
      })
{
}

OnLine::~OnLine()
{
    stop_ = true;
    thread_.join();
}

} // namespace zebreader81::test
