#include "channel/frmComm.h"

#include "channel/Clock.h"
#include "channel/MemoryLine.h"
#include "core/basError.h"

#include <algorithm>

namespace zebreader81 {

using namespace std::chrono;

namespace {
// While a host yield callback is set or a cancel is pending, a wait wakes at least this often.
constexpr milliseconds yieldSlice{50};
} // namespace

// --- SerialControl ---------------------------------------------------------------------

SerialControl::SerialControl() { Settings(settings_); }
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
    const double bits = 1.0 + parsed.dataBits + (parsed.parity == 'N' ? 0.0 : 1.0) + parsed.stopBits;
    charTime_ = duration_cast<steady_clock::duration>(duration<double>(bits / parsed.baud));
    forgetLook();
}

void SerialControl::forgetLook()
{
    osPending_ = 0;
    lastLook_ = {};
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
        const auto path = resolvePortPath(commPort_);
        const auto line = LineSettings::parse(settings_);
        backend_ = isMemoryLine(path) ? openMemoryLine(path, line, handshaking_)
                                      : openSerialDevice(path, line, handshaking_);
    } else {
        backend_.reset();
    }
    buffer_.clear();
    bufferHead_ = 0;
    forgetLook();
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
    const std::size_t got = port.readAvailable(buffer_);
    // The read took all the OS held: that is a look too.
    osPending_ = 0;
    lastLook_ = clock::now();
    if (got > 0 && trace_)
        trace_(false, buffer_.substr(before));
    return got;
}

int16_t SerialControl::InBufferCount()
{
    auto& port = open();
    const std::size_t buffered = buffer_.size() - bufferHead_;
    // While bytes wait in the buffer, a look at the OS younger than one character time cannot
    // have missed a character the line delivered since, so it stands: a driver that reads one
    // byte at a time and counts before each then costs no system call per byte. An empty
    // buffer always looks, so a wait never misses the first byte.
    const auto now = clock::now();
    if (buffered == 0 || now - lastLook_ >= charTime_) {
        osPending_ = port.pendingCount();
        lastLook_ = now;
    }
    const std::size_t count = buffered + osPending_;
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
    // The buffer answers on its own while it holds enough, so reading byte by byte costs no
    // system call per byte.
    if (inputLen_ == 0 || buffer_.size() - bufferHead_ < static_cast<std::size_t>(inputLen_))
        fillBuffer();
    const std::size_t buffered = buffer_.size() - bufferHead_;
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
    std::size_t written = 0;
    try {
        open().write(value, written);
    } catch (...) {
        if (written > 0 && trace_)
            trace_(true, value.substr(0, written));
        throw;
    }
    if (!value.empty() && trace_)
        trace_(true, value);
}

void SerialControl::purgeInput() { open().purgeInput(); }

bool SerialControl::waitReadable(milliseconds timeout, WakeSignal& wake)
{
    return open().waitReadable(timeout, wake);
}

// --- OneShotTimer ------------------------------------------------------------------------

bool OneShotTimer::Enabled() const { return deadline_ && clock::now() < *deadline_; }

void OneShotTimer::Enabled(bool value)
{
    if (!value)
        deadline_.reset();
    else if (!Enabled())
        deadline_ = clock::now() + milliseconds(std::max<int32_t>(interval_, 0));
}

// --- frmComm -----------------------------------------------------------------------------

frmComm::frmComm() = default;

frmComm::~frmComm() { Unload(); }

void frmComm::Unload()
{
    if (mscComm.PortOpen())
        mscComm.PortOpen(false);
}

void frmComm::Wake() { wake_.set(); }

void frmComm::Sleep(int64_t ms) { clock::sleepFor(milliseconds(ms)); }

void frmComm::DoEvents(std::optional<milliseconds> pace)
{
    milliseconds timeout{-1};
    auto limit = [&timeout](milliseconds m) {
        m = std::max(m, milliseconds(0));
        timeout = timeout.count() < 0 ? m : std::min(timeout, m);
    };
    // A timer that already ran out no longer bounds anything: the loop has seen it (or does
    // not look), and waking at once for it again would spin.
    if (tmrScan.Enabled()) {
        // Rounded up so that the timer has run out when the wait returns.
        limit(ceil<milliseconds>(*tmrScan.deadline() - clock::now()));
    }
    if (pace && pace->count() > 0)
        limit(*pace);
    if (yield_ || (cancel_ && cancel_->load()))
        limit(yieldSlice);

    const bool arrived = mscComm.PortOpen() && mscComm.fillBuffer() > 0;
    // A turn that ended for input leaves a pending Wake for the next one: the caller tests
    // CancelScan after every turn anyway, and this saves a system call per byte of a paced line.
    bool drainWake = !arrived;
    if (!arrived) {
        if (mscComm.PortOpen())
            drainWake = !mscComm.waitReadable(timeout, wake_);
        else if (auto* virtualTime = clock::virtualClock(); virtualTime && timeout.count() >= 0)
            virtualTime->advance(timeout);
        else
            wake_.wait(timeout);
    }
    if (drainWake)
        wake_.clear();
    if (yield_)
        yield_();
}

} // namespace zebreader81
