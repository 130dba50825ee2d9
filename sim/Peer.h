// The scanner side of a serial line: a peer on the master side of a pseudo-terminal.
// Family simulators derive from it, answer what the driver sends, and record every byte.
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

/// One chunk received from the driver, with the time it arrived.
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
    void clearReceived();
    /// Blocks until the driver has sent at least `count` bytes in all, or `timeout` passes.
    bool waitReceived(std::size_t count, std::chrono::milliseconds timeout) const;

    // Faults on demand.
    /// Drops every reply while set.
    void setSilent(bool silent);
    /// Sends only `count` more bytes, then falls silent (a stall in mid reply).
    void stallAfter(std::size_t count);
    /// Closes the line: the driver sees a hang-up.
    void hangUp();
    /// Writes bytes at once, outside the protocol.
    void inject(std::string_view bytes);

    /// Paces replies at the line rate: `bitsPerChar` bit times (start, data, parity, stop) at `baud`.
    void setPaced(int32_t baud, double bitsPerChar);

protected:
    /// Called on the peer's thread with every chunk the driver sends.
    virtual void onReceive(std::string_view bytes) = 0;
    /// Queues a reply (subject to silence, stall and pacing).
    void send(std::string_view bytes);
    /// Queues a reply to go out `delay` after the previous one.
    void sendAfter(std::chrono::milliseconds delay, std::string_view bytes);
    /// Serialises the simulator's state between its thread and the test's.
    mutable std::recursive_mutex stateMutex;

    /// Starts the threads; call at the end of the derived constructor.
    void start();
    /// Stops the threads; call first in the derived destructor.
    void stop();

private:
    void readLoop();
    void writeLoop();

    int master_ = -1;
    int slave_ = -1;
    int stopFd_ = -1;
    std::string path_;
    std::thread reader_, writer_;
    bool running_ = false;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Received> received_;
    std::size_t receivedTotal_ = 0;
    struct Pending {
        std::chrono::milliseconds delay;
        std::string bytes;
    };
    std::deque<Pending> outbox_;
    bool silent_ = false;
    bool stalled_ = false;
    std::size_t stallBudget_ = 0;
    bool stallArmed_ = false;
    bool hungUp_ = false;
    double charSeconds_ = 0.0;
};

/// Points COM port `port` at a device path for this process (ZEBREADER_COM<port>).
void mapPort(int port, const std::string& path);

} // namespace zebreader81::sim
