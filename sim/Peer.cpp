#include "sim/Peer.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

namespace zebreader81::sim {

using namespace std::chrono;

Peer::Peer()
{
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0)
        throw std::runtime_error("cannot create a pseudo-terminal");
    path_ = ptsname(master_);
    // Holding the slave open keeps the master readable while the driver has the port closed,
    // and raw mode keeps the line discipline from echoing or translating.
    slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0)
        throw std::runtime_error("cannot open " + path_);
    termios tio{};
    tcgetattr(slave_, &tio);
    cfmakeraw(&tio);
    tcsetattr(slave_, TCSANOW, &tio);
    stopFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

Peer::~Peer()
{
    stop();
    if (slave_ >= 0)
        close(slave_);
    if (master_ >= 0)
        close(master_);
    if (stopFd_ >= 0)
        close(stopFd_);
}

void Peer::start()
{
    running_ = true;
    reader_ = std::thread([this] { readLoop(); });
    writer_ = std::thread([this] { writeLoop(); });
}

void Peer::stop()
{
    if (!running_)
        return;
    running_ = false;
    const uint64_t one = 1;
    [[maybe_unused]] auto n = write(stopFd_, &one, sizeof one);
    {
        std::lock_guard lock(mutex_);
        changed_.notify_all();
    }
    if (reader_.joinable())
        reader_.join();
    if (writer_.joinable())
        writer_.join();
}

void Peer::readLoop()
{
    char buf[4096];
    while (running_) {
        int master;
        {
            std::lock_guard lock(mutex_);
            if (hungUp_)
                return;
            master = master_;
        }
        pollfd pfds[2] = {{master, POLLIN, 0}, {stopFd_, POLLIN, 0}};
        if (poll(pfds, 2, -1) < 0 && errno != EINTR)
            return;
        if (pfds[1].revents)
            return;
        if (!(pfds[0].revents & POLLIN)) {
            if (pfds[0].revents & (POLLHUP | POLLERR | POLLNVAL))
                return;
            continue;
        }
        const ssize_t n = read(master, buf, sizeof buf);
        if (n <= 0) {
            if (n < 0 && (errno == EINTR || errno == EAGAIN))
                continue;
            return;
        }
        const std::string chunk(buf, static_cast<std::size_t>(n));
        {
            std::lock_guard lock(mutex_);
            received_.push_back({steady_clock::now(), chunk});
            receivedTotal_ += chunk.size();
            changed_.notify_all();
        }
        std::lock_guard state(stateMutex);
        onReceive(chunk);
    }
}

void Peer::writeLoop()
{
    std::unique_lock lock(mutex_);
    while (running_) {
        changed_.wait(lock, [this] { return !running_ || !outbox_.empty(); });
        if (!running_)
            return;
        Pending next = std::move(outbox_.front());
        outbox_.pop_front();
        const double charSeconds = charSeconds_;
        lock.unlock();
        if (next.delay.count() > 0)
            std::this_thread::sleep_for(next.delay);
        auto due = steady_clock::now();
        for (std::size_t i = 0; i < next.bytes.size();) {
            const std::size_t chunk = charSeconds > 0 ? 1 : next.bytes.size() - i;
            {
                std::lock_guard guard(mutex_);
                if (hungUp_ || master_ < 0)
                    break;
                if (stallArmed_) {
                    if (stallBudget_ == 0) {
                        stalled_ = true;
                        break;
                    }
                }
            }
            std::size_t count = chunk;
            {
                std::lock_guard guard(mutex_);
                if (stallArmed_)
                    count = std::min(count, stallBudget_), stallBudget_ -= count;
            }
            if (charSeconds > 0) {
                due += duration_cast<steady_clock::duration>(duration<double>(charSeconds * static_cast<double>(count)));
                std::this_thread::sleep_until(due);
            }
            const ssize_t n = write(master_, next.bytes.data() + i, count);
            if (n <= 0)
                break;
            i += static_cast<std::size_t>(n);
        }
        lock.lock();
    }
}

void Peer::send(std::string_view bytes) { sendAfter(milliseconds(0), bytes); }

void Peer::sendAfter(milliseconds delay, std::string_view bytes)
{
    std::lock_guard lock(mutex_);
    if (silent_ || stalled_ || hungUp_)
        return;
    outbox_.push_back({delay, std::string(bytes)});
    changed_.notify_all();
}

void Peer::inject(std::string_view bytes)
{
    std::lock_guard lock(mutex_);
    outbox_.push_back({milliseconds(0), std::string(bytes)});
    changed_.notify_all();
}

std::string Peer::received() const
{
    std::lock_guard lock(mutex_);
    std::string all;
    for (const auto& r : received_)
        all += r.bytes;
    return all;
}

std::vector<Received> Peer::receivedChunks() const
{
    std::lock_guard lock(mutex_);
    return received_;
}

void Peer::clearReceived()
{
    std::lock_guard lock(mutex_);
    received_.clear();
    receivedTotal_ = 0;
}

bool Peer::waitReceived(std::size_t count, milliseconds timeout) const
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return receivedTotal_ >= count; });
}

void Peer::setSilent(bool silent)
{
    std::lock_guard lock(mutex_);
    silent_ = silent;
    if (silent)
        outbox_.clear();
}

void Peer::stallAfter(std::size_t count)
{
    std::lock_guard lock(mutex_);
    stallArmed_ = true;
    stallBudget_ = count;
}

void Peer::hangUp()
{
    std::lock_guard lock(mutex_);
    hungUp_ = true;
    outbox_.clear();
    // Closing both sides we hold makes the driver's end see the hang-up.
    if (slave_ >= 0) {
        close(slave_);
        slave_ = -1;
    }
    if (master_ >= 0) {
        close(master_);
        master_ = -1;
    }
}

void Peer::setPaced(int32_t baud, double bitsPerChar)
{
    std::lock_guard lock(mutex_);
    charSeconds_ = baud > 0 ? bitsPerChar / baud : 0.0;
}

void mapPort(int port, const std::string& path)
{
    setenv(("ZEBREADER_COM" + std::to_string(port)).c_str(), path.c_str(), 1);
}

} // namespace zebreader81::sim
