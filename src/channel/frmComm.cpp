#include "channel/frmComm.h"

#include "engine/basError.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

namespace zebreader81 {

using namespace std::chrono;

namespace {
// While a host yield callback is set, a wait wakes at least this often to run it.
constexpr milliseconds yieldSlice{50};
} // namespace

// --- SerialControl ---------------------------------------------------------------------

SerialControl::SerialControl() = default;
SerialControl::~SerialControl() = default;

void SerialControl::CommPort(int16_t value)
{
    if (PortOpen())
        err::raise(err::PortAlreadyOpen);
    if (value < 1)
        err::raise(err::InvalidPortNumber);
    commPort_ = value;
}

void SerialControl::Settings(const std::string& value)
{
    const auto parsed = LineSettings::parse(value);
    if (backend_)
        backend_->apply(parsed, handshaking_);
    settings_ = value;
}

void SerialControl::Handshaking(int16_t value)
{
    if (value < 0 || value > 3)
        err::raise(err::InvalidPropertyValue);
    if (backend_)
        backend_->apply(LineSettings::parse(settings_), value);
    handshaking_ = value;
}

void SerialControl::PortOpen(bool value)
{
    if (value == PortOpen()) {
        if (value)
            err::raise(err::PortAlreadyOpen);
        return;
    }
    if (value) {
        backend_ = openPosixSerial(resolvePortPath(commPort_), LineSettings::parse(settings_),
                                   handshaking_);
    } else {
        backend_.reset();
    }
    buffer_.clear();
    bufferHead_ = 0;
}

SerialBackend& SerialControl::open()
{
    if (!backend_)
        err::raise(err::DeviceNotOpen);
    return *backend_;
}

std::size_t SerialControl::fillBuffer()
{
    auto& port = open();
    if (bufferHead_ > 0 && bufferHead_ == buffer_.size()) {
        buffer_.clear();
        bufferHead_ = 0;
    }
    const auto before = buffer_.size();
    const std::size_t moved = port.readAvailable(buffer_);
    if (moved > 0 && trace_)
        trace_(false, buffer_.substr(before));
    return moved;
}

int16_t SerialControl::InBufferCount()
{
    auto& port = open();
    const std::size_t count = buffer_.size() - bufferHead_ + port.pendingCount();
    return static_cast<int16_t>(std::min<std::size_t>(count, 32767));
}

void SerialControl::InputLen(int16_t value)
{
    if (value < 0)
        err::raise(err::InvalidPropertyValue);
    inputLen_ = value;
}

std::string SerialControl::Input()
{
    open();
    std::size_t buffered = buffer_.size() - bufferHead_;
    if (buffered == 0 || (inputLen_ == 0)) {
        fillBuffer();
        buffered = buffer_.size() - bufferHead_;
    }
    const std::size_t take =
        inputLen_ == 0 ? buffered : std::min<std::size_t>(buffered, static_cast<std::size_t>(inputLen_));
    std::string out = buffer_.substr(bufferHead_, take);
    bufferHead_ += take;
    if (bufferHead_ == buffer_.size()) {
        buffer_.clear();
        bufferHead_ = 0;
    }
    return out;
}

void SerialControl::Output(const std::string& value)
{
    open().write(value);
    if (trace_)
        trace_(true, value);
}

void SerialControl::waitReadable(milliseconds timeout, int wakeFd)
{
    open().waitReadable(timeout, wakeFd);
}

// --- OneShotTimer ------------------------------------------------------------------------

bool OneShotTimer::Enabled() const { return deadline_ && Clock::now() < *deadline_; }

void OneShotTimer::Enabled(bool value)
{
    if (value)
        deadline_ = Clock::now() + milliseconds(std::max<int32_t>(interval_, 0));
    else
        deadline_.reset();
}

// --- frmComm -----------------------------------------------------------------------------

frmComm::frmComm() : wakeFd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

frmComm::~frmComm()
{
    Unload();
    if (wakeFd_ >= 0)
        close(wakeFd_);
}

void frmComm::Unload()
{
    if (mscComm.PortOpen())
        mscComm.PortOpen(false);
}

void frmComm::Wake()
{
    if (wakeFd_ >= 0) {
        const uint64_t one = 1;
        [[maybe_unused]] auto n = write(wakeFd_, &one, sizeof one);
    }
}

void frmComm::Sleep(int64_t ms)
{
    if (ms > 0)
        std::this_thread::sleep_for(milliseconds(ms));
}

void frmComm::DoEvents(std::optional<milliseconds> pace)
{
    milliseconds timeout{-1};
    auto limit = [&timeout](milliseconds m) {
        m = std::max(m, milliseconds(0));
        timeout = timeout.count() < 0 ? m : std::min(timeout, m);
    };
    if (auto deadline = tmrScan.deadline())
        limit(duration_cast<milliseconds>(*deadline - OneShotTimer::Clock::now()) + milliseconds(1));
    if (pace)
        limit(*pace);
    if (yield_)
        limit(yieldSlice);

    if (mscComm.PortOpen()) {
        // Bytes that came in since the caller last looked end this turn at once: the poll
        // below would not see them again.
        if (mscComm.fillBuffer() == 0)
            mscComm.waitReadable(timeout, wakeFd_);
    } else {
        pollfd pfd{wakeFd_, POLLIN, 0};
        const int ms = timeout.count() < 0 ? -1 : static_cast<int>(std::min<int64_t>(timeout.count(), 1 << 30));
        [[maybe_unused]] int rc = poll(&pfd, 1, ms);
    }
    uint64_t drained = 0;
    [[maybe_unused]] auto n = read(wakeFd_, &drained, sizeof drained);
    if (yield_)
        yield_();
}

} // namespace zebreader81
