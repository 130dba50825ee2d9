// The scanner side of a serial line: a peer on the master side of a pseudo-terminal.
// Family simulators derive from it, answer what the driver sends, and record every byte.
//
// One thread per peer does all the line's I/O: it reads what the driver sends, calls
// onReceive (under stateMutex), and writes the queued replies in order, each after its
// delay and, in paced mode, at the line rate. Faults act on the replies: silence drops
// them, a stall lets a given number of bytes through and then drops the rest, garbling
// replaces bytes with noise, a hang-up closes the line so that the driver sees it go.
//
// On a memory line (Transport::Memory) there is no pty and no thread: the driver opens
// memory://peer<n>, the peer answers inside the driver's write and delivers each reply when
// the driver looks at or waits on the line at or after its time. Under a VirtualClock such a
// wait moves time straight on to the next reply (or action), so nothing takes real time. A
// babble there goes at the rate the driver set on the line.
#pragma once

#include "channel/Clock.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace zebreader81::sim {

/// One chunk that crossed the line, with the time it did.
struct Received {
    std::chrono::steady_clock::time_point at;
    std::string bytes;
};

enum class Transport { Pty, Memory };

/// For its life, peers made on this thread without a transport of their own use memory
/// lines, and the thread's time is virtual.
class MemoryLines {
public:
    MemoryLines();
    ~MemoryLines();
    MemoryLines(const MemoryLines&) = delete;
    MemoryLines& operator=(const MemoryLines&) = delete;
    clock::VirtualClock& clock() { return clock_; }

private:
    clock::VirtualClock clock_;
    Transport previous_;
};

/// The transport peers made on this thread take by default.
Transport defaultTransport();

class Peer {
public:
    explicit Peer(Transport transport = defaultTransport());
    virtual ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Device path the driver opens (the pseudo-terminal's slave side, or memory://peer<n>).
    const std::string& path() const { return path_; }

    /// Everything the driver sent so far, in order.
    std::string received() const;
    std::vector<Received> receivedChunks() const;
    std::size_t receivedCount() const;
    void clearReceived();
    /// Blocks until the driver has sent at least `count` bytes in all, or `timeout` passes.
    bool waitReceived(std::size_t count, std::chrono::milliseconds timeout) const;

    /// Everything the peer put on the line so far (replies, garbage, injections), in order.
    std::string sent() const;
    std::vector<Received> sentChunks() const;
    /// Keeps (default) or stops keeping the records above; counts go on either way.
    void setRecording(bool on);
    /// Blocks until every queued reply is out (or dropped), or `timeout` passes.
    bool waitIdle(std::chrono::milliseconds timeout) const;

    // Faults on demand.
    /// Drops every reply while set (queued ones included).
    void setSilent(bool silent);
    /// Sends only `count` more reply bytes, then falls silent (a stall in mid reply) until
    /// clearFaults.
    void stallAfter(std::size_t count);
    /// Replaces the next `count` reply bytes with noise (deterministic for a given seed).
    void garble(std::size_t count, uint32_t seed = 1);
    /// Keeps the line full with `pattern` repeated, after any queued replies (a babbling
    /// device, or a flood for benchmarks); an empty pattern ends it.
    void babble(std::string_view pattern);
    /// Ends silence, a stall, garbling and babbling.
    void clearFaults();
    /// Closes the line now: queued replies are dropped and the driver sees a hang-up.
    void hangUp();
    /// Closes the line `delay` after the replies queued so far have gone out.
    void hangUpAfter(std::chrono::milliseconds delay);
    bool hungUp() const;
    /// Writes bytes at once, ahead of queued replies and outside every fault and the pacing.
    void inject(std::string_view bytes);

    // Actions at a point of the conversation, on a memory line only: run in the driver's
    // thread as if another thread acted at that moment (the driver's wait ends).
    using Action = std::function<void()>;
    /// Runs `action` `after` the peer has put `total` bytes on the line in all.
    void whenSent(std::size_t total, Action action, std::chrono::milliseconds after = {});
    /// Runs `action` `after` the driver has sent `total` bytes in all.
    void whenReceived(std::size_t total, Action action, std::chrono::milliseconds after = {});
    /// Bytes put on the line so far in all, recorded or not.
    std::size_t sentCount() const;

    /// Paces replies at the line rate: `bitsPerChar` bit times (start, data, parity, stop) at
    /// `baud`; a baud of 0 ends pacing.
    void setPaced(int32_t baud, double bitsPerChar);
    /// Paces at the rate of a settings text such as "9600,E,7,1"; False when it cannot be read.
    bool setPaced(const std::string& settings);

protected:
    /// Called on the peer's thread with every chunk the driver sends, under stateMutex.
    virtual void onReceive(std::string_view bytes) = 0;
    /// Queues a reply (subject to silence, stall, garbling and pacing).
    void send(std::string_view bytes);
    /// Queues a reply to go out `delay` after the previous one.
    void sendAfter(std::chrono::milliseconds delay, std::string_view bytes);
    /// The line's time: the thread's clock on a memory line.
    std::chrono::steady_clock::time_point now() const;
    /// Serialises the simulator's state between its thread and the test's.
    mutable std::recursive_mutex stateMutex;

    /// Starts the thread; call at the end of the derived constructor.
    void start();
    /// Stops the thread; call first in the derived destructor.
    void stop();

private:
    struct Pending {
        std::chrono::milliseconds delay;
        std::string bytes;
        bool hangUp = false;
    };
    using Clock = std::chrono::steady_clock;
    class MemoryPort;
    struct Hook {
        bool onSent;
        std::size_t total;
        std::chrono::milliseconds after;
        Action action;
        std::optional<Clock::time_point> due;
    };

    void run();
    // Memory line: what the driver sent; what is due by now onto the line (True when an
    // action ran); when the next thing is due.
    void deliver(std::string_view bytes);
    bool pump();
    Clock::time_point nextDue();
    void wake() const;
    // With mutex_ held: writes what is due; returns when the next write is due (or max()).
    Clock::time_point writeDue(bool& wantWrite);
    bool writeRaw(std::string_view bytes, std::size_t& done);
    void closeLine();
    bool onIoThread() const { return std::this_thread::get_id() == io_.get_id(); }

    const bool memory_;
    int master_ = -1;
    int slave_ = -1;
    int wakeFd_ = -1;
    std::string path_;
    std::thread io_;
    bool running_ = false;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Received> received_;
    std::size_t receivedTotal_ = 0;
    std::vector<Received> sent_;
    std::deque<Pending> outbox_;
    std::string injected_;
    // The head of the outbox: when it started waiting, how much of it went out.
    bool headStarted_ = false;
    Clock::time_point headDue_{};
    std::size_t headDone_ = 0;
    bool silent_ = false;
    bool stallArmed_ = false;
    bool stalled_ = false;
    std::size_t stallBudget_ = 0;
    std::size_t garbleLeft_ = 0;
    uint32_t noise_ = 1;
    std::string babble_; // the pattern, repeated to a block
    std::size_t babbleAt_ = 0;
    bool recording_ = true;
    bool hangRequested_ = false;
    bool hungUp_ = false;
    double charSeconds_ = 0.0;
    std::size_t sentTotal_ = 0;
    // Memory line: the bytes on their way to the driver, whether the driver has it open, the
    // line's character time (for a babble), and when the babble's next byte is due.
    std::string line_;
    bool portOpen_ = false;
    Clock::duration lineCharTime_{};
    Clock::time_point babbleDue_{};
    std::vector<Hook> hooks_;
    std::shared_ptr<Peer*> self_;
};

/// Points COM port `port` at a device path for this process (ZEBREADER_COM<port>).
void mapPort(int port, const std::string& path);

} // namespace zebreader81::sim
