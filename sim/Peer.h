// The scanner side of a serial line: a peer on the master side of a pseudo-terminal.
// Family simulators derive from it, answer what the driver sends, and record every byte.
//
// One thread per peer does all the line's I/O: it reads what the driver sends, calls
// onReceive (under stateMutex), and writes the queued replies in order, each after its
// delay and, in paced mode, at the line rate. Faults act on the replies: silence drops
// them, a stall lets a given number of bytes through and then drops the rest, garbling
// replaces bytes with noise, a hang-up closes the line so that the driver sees it go.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
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

class Peer {
public:
    Peer();
    virtual ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Device path the driver opens (the pseudo-terminal's slave side).
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

    void run();
    void wake() const;
    // With mutex_ held: writes what is due; returns when the next write is due (or max()).
    Clock::time_point writeDue(bool& wantWrite);
    bool writeRaw(std::string_view bytes, std::size_t& done);
    void closeLine();
    bool onIoThread() const { return std::this_thread::get_id() == io_.get_id(); }

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
};

/// Points COM port `port` at a device path for this process (ZEBREADER_COM<port>).
void mapPort(int port, const std::string& path);

} // namespace zebreader81::sim
