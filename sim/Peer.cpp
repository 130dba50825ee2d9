#include "sim/Peer.h"

#include "channel/MemoryLine.h"
#include "core/basError.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

namespace zebreader81::sim {

using namespace std::chrono;

namespace {

void closeFd(int& fd)
{
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

std::string joined(const std::vector<Received>& chunks)
{
    std::string all;
    for (const auto& c : chunks)
        all += c.bytes;
    return all;
}

thread_local Transport threadTransport = Transport::Pty;

} // namespace

Transport defaultTransport() { return threadTransport; }

MemoryLines::MemoryLines() : previous_(threadTransport) { threadTransport = Transport::Memory; }

MemoryLines::~MemoryLines() { threadTransport = previous_; }

// The driver's end of a memory line. Every call first brings the line up to the clock.
class Peer::MemoryPort final : public SerialBackend {
public:
    explicit MemoryPort(std::shared_ptr<Peer*> peer) : peer_(std::move(peer)) {}
    ~MemoryPort() override
    {
        if (Peer* p = *peer_) {
            std::lock_guard lock(p->mutex_);
            p->portOpen_ = false;
        }
    }

    void apply(const LineSettings& s, int) override
    {
        Peer& p = live();
        const double bits = 1.0 + s.dataBits + (s.parity == 'N' ? 0.0 : 1.0) + s.stopBits;
        std::lock_guard lock(p.mutex_);
        p.lineCharTime_ = duration_cast<Clock::duration>(duration<double>(bits / s.baud));
    }

    std::size_t readAvailable(std::string& into) override
    {
        Peer& p = live();
        std::lock_guard lock(p.mutex_);
        const std::size_t n = p.line_.size();
        into += p.line_;
        p.line_.clear();
        return n;
    }

    std::size_t pendingCount() override
    {
        Peer& p = live();
        std::lock_guard lock(p.mutex_);
        return p.line_.size();
    }

    void write(std::string_view bytes, std::size_t& written) override
    {
        written = 0;
        live().deliver(bytes);
        written = bytes.size();
    }

    bool waitReadable(milliseconds timeout, WakeSignal& wake) override
    {
        if (pendingCount() > 0)
            return true;
        clock::VirtualClock* virtualTime = clock::virtualClock();
        const auto limit = timeout.count() < 0 ? Clock::time_point::max() : clock::now() + timeout;
        for (;;) {
            const auto next = live().nextDue();
            if (!virtualTime) {
                const auto until = std::min(next, limit);
                wake.wait(until == Clock::time_point::max()
                              ? milliseconds(-1)
                              : std::max(milliseconds(0), ceil<milliseconds>(until - clock::now())));
                return pendingCount() > 0;
            }
            if (next > limit) {
                if (timeout.count() < 0)
                    throw std::logic_error("a wait without limit on a memory line where nothing will come");
                virtualTime->advanceTo(limit);
                return pendingCount() > 0;
            }
            virtualTime->advanceTo(next);
            const bool acted = (*peer_) && (*peer_)->pump();
            if (pendingCount() > 0)
                return true;
            // An action stands for another thread, which would have woken the wait.
            if (acted)
                return false;
        }
    }

private:
    Peer& live()
    {
        Peer* p = *peer_;
        if (!p)
            err::raise(err::PortIo);
        p->pump();
        std::lock_guard lock(p->mutex_);
        if (p->hungUp_)
            err::raise(err::PortIo);
        return *p;
    }

    std::shared_ptr<Peer*> peer_;
};

Peer::Peer(Transport transport) : memory_(transport == Transport::Memory)
{
    if (memory_) {
        static std::atomic<int> lines{0};
        const std::string name = "peer" + std::to_string(++lines);
        path_ = "memory://" + name;
        self_ = std::make_shared<Peer*>(this);
        registerMemoryLine(name, [self = self_](const LineSettings& settings, int handshaking) {
            Peer* p = *self;
            if (!p)
                err::raise(err::InvalidPortNumber);
            {
                std::lock_guard lock(p->mutex_);
                if (p->hungUp_)
                    err::raise(err::InvalidPortNumber);
                if (p->portOpen_)
                    err::raise(err::PortAlreadyOpen);
                // A freshly opened port holds nothing from before.
                p->line_.clear();
                p->portOpen_ = true;
            }
            auto port = std::make_unique<MemoryPort>(self);
            port->apply(settings, handshaking);
            return port;
        });
        return;
    }
    try {
        master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0)
            throw std::runtime_error("cannot create a pseudo-terminal");
        path_ = ptsname(master_);
        // Holding the slave open keeps the master readable while the driver has the port
        // closed, and raw mode keeps the line discipline from echoing or translating.
        slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (slave_ < 0)
            throw std::runtime_error("cannot open " + path_);
        termios tio{};
        tcgetattr(slave_, &tio);
        cfmakeraw(&tio);
        tcsetattr(slave_, TCSANOW, &tio);
        wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        if (wakeFd_ < 0)
            throw std::runtime_error("cannot create an eventfd");
    } catch (...) {
        closeFd(slave_);
        closeFd(master_);
        closeFd(wakeFd_);
        throw;
    }
}

Peer::~Peer()
{
    stop();
    if (memory_) {
        registerMemoryLine(path_.substr(path_.find("//") + 2), {});
        *self_ = nullptr;
    }
    closeFd(slave_);
    closeFd(master_);
    closeFd(wakeFd_);
}

void Peer::start()
{
    std::lock_guard lock(mutex_);
    if (running_)
        return;
    running_ = true;
    if (!memory_)
        io_ = std::thread([this] { run(); });
}

void Peer::stop()
{
    {
        std::lock_guard lock(mutex_);
        if (!running_)
            return;
        running_ = false;
        changed_.notify_all();
    }
    wake();
    if (io_.joinable())
        io_.join();
}

void Peer::wake() const
{
    if (memory_)
        return;
    const uint64_t one = 1;
    [[maybe_unused]] auto n = ::write(wakeFd_, &one, sizeof one);
}

void Peer::run()
{
    char buf[4096];
    std::unique_lock lock(mutex_);
    while (running_) {
        if (hangRequested_ && !hungUp_)
            closeLine();
        bool wantWrite = false;
        const auto due = hungUp_ ? Clock::time_point::max() : writeDue(wantWrite);
        // Only this thread closes the line, so the descriptor stays valid outside the lock.
        const int master = master_;
        lock.unlock();

        pollfd pfds[2] = {{wakeFd_, POLLIN, 0},
                          {master, static_cast<short>(POLLIN | (wantWrite ? POLLOUT : 0)), 0}};
        timespec ts{};
        timespec* timeout = nullptr;
        if (due != Clock::time_point::max()) {
            const auto left = std::max(due - Clock::now(), Clock::duration::zero());
            const auto ns = duration_cast<nanoseconds>(left).count();
            ts.tv_sec = static_cast<time_t>(ns / 1'000'000'000);
            ts.tv_nsec = static_cast<long>(ns % 1'000'000'000);
            timeout = &ts;
        }
        ppoll(pfds, master >= 0 ? 2 : 1, timeout, nullptr);
        uint64_t drained = 0;
        [[maybe_unused]] auto d = ::read(wakeFd_, &drained, sizeof drained);

        if (master >= 0 && (pfds[1].revents & (POLLIN | POLLHUP | POLLERR))) {
            const ssize_t n = ::read(master, buf, sizeof buf);
            if (n > 0) {
                std::string chunk(buf, static_cast<std::size_t>(n));
                {
                    std::lock_guard guard(mutex_);
                    if (recording_)
                        received_.push_back({Clock::now(), chunk});
                    receivedTotal_ += chunk.size();
                    changed_.notify_all();
                }
                std::lock_guard state(stateMutex);
                onReceive(chunk);
            } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
                // The line is gone under us; stop using it rather than spin on it.
                lock.lock();
                hangRequested_ = true;
                continue;
            }
        }
        lock.lock();
    }
}

Peer::Clock::time_point Peer::now() const { return memory_ ? clock::now() : Clock::now(); }

void Peer::deliver(std::string_view bytes)
{
    {
        std::lock_guard lock(mutex_);
        if (recording_)
            received_.push_back({now(), std::string(bytes)});
        receivedTotal_ += bytes.size();
    }
    {
        std::lock_guard state(stateMutex);
        onReceive(bytes);
    }
    pump();
}

bool Peer::pump()
{
    bool acted = false;
    for (;;) {
        std::unique_lock lock(mutex_);
        if (hangRequested_ && !hungUp_)
            closeLine();
        const auto t = now();
        if (!hungUp_) {
            bool wantWrite = false;
            writeDue(wantWrite);
            if (!babble_.empty() && outbox_.empty()) {
                const auto charTime = std::max(lineCharTime_, Clock::duration(1));
                babbleDue_ = std::max(babbleDue_, t - charTime * 4096);
                std::string burst;
                for (; babbleDue_ <= t; babbleDue_ += charTime) {
                    burst += babble_[babbleAt_];
                    babbleAt_ = (babbleAt_ + 1) % babble_.size();
                }
                std::size_t done = 0;
                if (!burst.empty())
                    writeRaw(burst, done);
            }
        }
        for (auto& h : hooks_)
            if (!h.due && (h.onSent ? sentTotal_ : receivedTotal_) >= h.total)
                h.due = t + h.after;
        auto first = hooks_.end();
        for (auto h = hooks_.begin(); h != hooks_.end(); ++h)
            if (h->due && *h->due <= t && (first == hooks_.end() || *h->due < *first->due))
                first = h;
        if (first == hooks_.end())
            return acted;
        Action action = std::move(first->action);
        hooks_.erase(first);
        lock.unlock();
        action();
        acted = true;
    }
}

Peer::Clock::time_point Peer::nextDue()
{
    std::lock_guard lock(mutex_);
    auto next = Clock::time_point::max();
    if (hangRequested_ && !hungUp_)
        next = now();
    if (!hungUp_ && !outbox_.empty() && headStarted_)
        next = std::min(next, headDue_);
    if (!hungUp_ && outbox_.empty() && !babble_.empty())
        next = std::min(next, babbleDue_);
    for (const auto& h : hooks_)
        if (h.due)
            next = std::min(next, *h.due);
    return next;
}

void Peer::whenSent(std::size_t total, Action action, milliseconds after)
{
    std::lock_guard lock(mutex_);
    hooks_.push_back({true, total, after, std::move(action), std::nullopt});
}

void Peer::whenReceived(std::size_t total, Action action, milliseconds after)
{
    std::lock_guard lock(mutex_);
    hooks_.push_back({false, total, after, std::move(action), std::nullopt});
}

std::size_t Peer::sentCount() const
{
    std::lock_guard lock(mutex_);
    return sentTotal_;
}

bool Peer::writeRaw(std::string_view bytes, std::size_t& done)
{
    done = 0;
    if (memory_) {
        line_.append(bytes);
        done = bytes.size();
    }
    while (done < bytes.size()) {
        const ssize_t n = ::write(master_, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            done += static_cast<std::size_t>(n);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            break;
        } else {
            done = bytes.size(); // nobody can take them: count them as lost
            return true;
        }
    }
    sentTotal_ += done;
    if (done > 0 && recording_)
        sent_.push_back({now(), std::string(bytes.substr(0, done))});
    return done == bytes.size();
}

Peer::Clock::time_point Peer::writeDue(bool& wantWrite)
{
    constexpr auto never = Clock::time_point::max();
    const auto now = this->now();
    const auto charTime = duration_cast<Clock::duration>(duration<double>(charSeconds_));

    if (!injected_.empty()) {
        std::size_t done = 0;
        writeRaw(injected_, done);
        injected_.erase(0, done);
        if (!injected_.empty()) {
            wantWrite = true;
            return never;
        }
        changed_.notify_all();
    }
    while (!outbox_.empty()) {
        Pending& head = outbox_.front();
        if (!headStarted_) {
            headStarted_ = true;
            headDone_ = 0;
            headDue_ =
                now + head.delay + (charSeconds_ > 0 && !head.hangUp ? charTime : Clock::duration::zero());
        }
        if (now < headDue_)
            return headDue_;
        if (head.hangUp) {
            closeLine();
            return never;
        }
        while (headDone_ < head.bytes.size()) {
            if (stallArmed_ && stallBudget_ == 0)
                stalled_ = true;
            if (stalled_) {
                outbox_.erase(std::remove_if(outbox_.begin(), outbox_.end(),
                                             [](const Pending& p) { return !p.hangUp; }),
                              outbox_.end());
                headStarted_ = false;
                changed_.notify_all();
                return writeDue(wantWrite);
            }
            std::size_t count = head.bytes.size() - headDone_;
            if (stallArmed_)
                count = std::min(count, stallBudget_);
            if (charSeconds_ > 0) {
                if (now < headDue_)
                    return headDue_;
                // Every byte whose time has come goes now; a late wake-up catches up.
                const auto late = static_cast<std::size_t>((now - headDue_) / charTime);
                count = std::min(count, late + 1);
            }
            for (std::size_t i = 0; i < count && garbleLeft_ > 0; ++i, --garbleLeft_) {
                noise_ ^= noise_ << 13;
                noise_ ^= noise_ >> 17;
                noise_ ^= noise_ << 5;
                head.bytes[headDone_ + i] = static_cast<char>(noise_ & 0xFF);
            }
            std::size_t done = 0;
            const bool whole = writeRaw(std::string_view(head.bytes).substr(headDone_, count), done);
            headDone_ += done;
            if (stallArmed_)
                stallBudget_ -= std::min(stallBudget_, done);
            if (charSeconds_ > 0)
                headDue_ += charTime * static_cast<Clock::rep>(done);
            if (!whole) {
                wantWrite = true;
                return charSeconds_ > 0 ? headDue_ : never;
            }
        }
        outbox_.pop_front();
        headStarted_ = false;
        changed_.notify_all();
    }
    if (!babble_.empty() && !memory_) {
        // Keep the line full, the pattern unbroken across short writes; a bounded number of
        // writes per turn keeps the driver's bytes coming in.
        for (int i = 0; i < 16; ++i) {
            std::size_t done = 0;
            const bool whole = writeRaw(std::string_view(babble_).substr(babbleAt_), done);
            babbleAt_ = (babbleAt_ + done) % babble_.size();
            if (!whole)
                break;
        }
        wantWrite = true;
    }
    return never;
}

void Peer::closeLine()
{
    closeFd(slave_);
    closeFd(master_);
    hungUp_ = true;
    outbox_.clear();
    injected_.clear();
    line_.clear();
    headStarted_ = false;
    changed_.notify_all();
}

void Peer::send(std::string_view bytes) { sendAfter(milliseconds(0), bytes); }

void Peer::sendAfter(milliseconds delay, std::string_view bytes)
{
    {
        std::lock_guard lock(mutex_);
        if (silent_ || stalled_ || hungUp_ || hangRequested_)
            return;
        outbox_.push_back({delay, std::string(bytes)});
    }
    wake();
}

void Peer::inject(std::string_view bytes)
{
    {
        std::lock_guard lock(mutex_);
        if (hungUp_)
            return;
        injected_.append(bytes);
    }
    wake();
}

std::string Peer::received() const
{
    std::lock_guard lock(mutex_);
    return joined(received_);
}

std::vector<Received> Peer::receivedChunks() const
{
    std::lock_guard lock(mutex_);
    return received_;
}

std::size_t Peer::receivedCount() const
{
    std::lock_guard lock(mutex_);
    return receivedTotal_;
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
    if (memory_) // only the driver's own thread can send more
        return receivedTotal_ >= count;
    return changed_.wait_for(lock, timeout, [&] { return receivedTotal_ >= count; });
}

std::string Peer::sent() const
{
    std::lock_guard lock(mutex_);
    return joined(sent_);
}

std::vector<Received> Peer::sentChunks() const
{
    std::lock_guard lock(mutex_);
    return sent_;
}

bool Peer::waitIdle(milliseconds timeout) const
{
    if (memory_) {
        // Lets the line's time run until the replies are out.
        auto& self = const_cast<Peer&>(*this);
        const auto until = now() + timeout;
        for (;;) {
            self.pump();
            {
                std::lock_guard lock(mutex_);
                if (hungUp_ || (outbox_.empty() && injected_.empty()))
                    return true;
            }
            const auto next = std::min(self.nextDue(), until);
            if (next >= until && now() >= until)
                return false;
            if (auto* v = clock::virtualClock())
                v->advanceTo(next);
            else
                std::this_thread::sleep_until(next);
        }
    }
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout,
                             [&] { return hungUp_ || (outbox_.empty() && injected_.empty()); });
}

void Peer::setSilent(bool silent)
{
    std::lock_guard lock(mutex_);
    silent_ = silent;
    if (silent) {
        outbox_.erase(
            std::remove_if(outbox_.begin(), outbox_.end(), [](const Pending& p) { return !p.hangUp; }),
            outbox_.end());
        headStarted_ = false;
        changed_.notify_all();
    }
}

void Peer::stallAfter(std::size_t count)
{
    std::lock_guard lock(mutex_);
    stallArmed_ = true;
    stalled_ = false;
    stallBudget_ = count;
}

void Peer::garble(std::size_t count, uint32_t seed)
{
    std::lock_guard lock(mutex_);
    garbleLeft_ = count;
    noise_ = seed != 0 ? seed : 1;
}

void Peer::babble(std::string_view pattern)
{
    {
        std::lock_guard lock(mutex_);
        babble_.clear();
        babbleAt_ = 0;
        babbleDue_ = now();
        while (!pattern.empty() && babble_.size() < 4096)
            babble_ += pattern;
    }
    wake();
}

void Peer::setRecording(bool on)
{
    std::lock_guard lock(mutex_);
    recording_ = on;
}

void Peer::clearFaults()
{
    std::lock_guard lock(mutex_);
    babble_.clear();
    silent_ = false;
    stallArmed_ = false;
    stalled_ = false;
    stallBudget_ = 0;
    garbleLeft_ = 0;
}

void Peer::hangUp()
{
    std::unique_lock lock(mutex_);
    if (hungUp_)
        return;
    if (memory_) {
        closeLine();
        return;
    }
    outbox_.clear();
    headStarted_ = false;
    if (!running_ || onIoThread()) {
        // On the peer's own thread (from onReceive) the line goes as soon as it returns.
        hangRequested_ = true;
        if (!running_)
            closeLine();
        return;
    }
    hangRequested_ = true;
    lock.unlock();
    wake();
    lock.lock();
    changed_.wait(lock, [this] { return hungUp_ || !running_; });
}

void Peer::hangUpAfter(milliseconds delay)
{
    {
        std::lock_guard lock(mutex_);
        if (hungUp_)
            return;
        outbox_.push_back({delay, {}, true});
    }
    wake();
}

bool Peer::hungUp() const
{
    std::lock_guard lock(mutex_);
    return hungUp_;
}

void Peer::setPaced(int32_t baud, double bitsPerChar)
{
    {
        std::lock_guard lock(mutex_);
        charSeconds_ = baud > 0 && bitsPerChar > 0 ? bitsPerChar / baud : 0.0;
    }
    wake();
}

bool Peer::setPaced(const std::string& settings)
{
    // "baud,parity,data,stop": a start bit, the data bits, a parity bit unless N, the stop bits.
    std::istringstream in(settings);
    std::string baud, parity, data, stop;
    if (!std::getline(in, baud, ',') || !std::getline(in, parity, ',') || !std::getline(in, data, ',') ||
        !std::getline(in, stop))
        return false;
    char* end = nullptr;
    const long rate = std::strtol(baud.c_str(), &end, 10);
    if (*end != '\0' || rate <= 0)
        return false;
    const long dataBits = std::strtol(data.c_str(), &end, 10);
    if (*end != '\0' || dataBits < 4 || dataBits > 8)
        return false;
    const double stopBits = std::strtod(stop.c_str(), &end);
    if (*end != '\0' || !(stopBits == 1.0 || stopBits == 1.5 || stopBits == 2.0))
        return false;
    if (parity.size() != 1 || std::string("NnEeOoMmSs").find(parity[0]) == std::string::npos)
        return false;
    const double parityBits = (parity[0] == 'N' || parity[0] == 'n') ? 0.0 : 1.0;
    setPaced(static_cast<int32_t>(rate), 1.0 + static_cast<double>(dataBits) + parityBits + stopBits);
    return true;
}

void mapPort(int port, const std::string& path)
{
    setenv(("ZEBREADER_COM" + std::to_string(port)).c_str(), path.c_str(), 1);
}

} // namespace zebreader81::sim
