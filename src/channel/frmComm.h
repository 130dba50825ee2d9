// The hidden serial form: the serial control `mscComm` and the one-shot timer `tmrScan`
// that every serial driver reaches through the reader's fComm.
#pragma once

#include "channel/SerialBackend.h"
#include "channel/WakeSignal.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zebreader81 {

/// The serial communications control. Keeps its own receive buffer: InBufferCount is what
/// is buffered plus what the OS holds; Input takes from the buffer.
class SerialControl {
public:
    SerialControl();
    ~SerialControl();
    SerialControl(const SerialControl&) = delete;
    SerialControl& operator=(const SerialControl&) = delete;

    /// Port number; changing it while open raises 8005.
    int16_t CommPort() const { return commPort_; }
    void CommPort(int16_t value);
    /// "baud,parity,data,stop"; a malformed text raises 380, one the open device refuses 8015.
    const std::string& Settings() const { return settings_; }
    void Settings(const std::string& value);
    /// 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both.
    int16_t Handshaking() const { return handshaking_; }
    void Handshaking(int16_t value);
    /// Opens (True) or closes (False) the port.
    bool PortOpen() const { return backend_ != nullptr; }
    void PortOpen(bool value);
    /// Characters waiting; raises 8012 when the port is closed.
    int16_t InBufferCount();
    /// Characters one read of Input takes: 0 for all that are waiting.
    int16_t InputLen() const { return inputLen_; }
    void InputLen(int16_t value);
    /// Takes up to InputLen characters (one byte each) from the receive buffer.
    std::string Input();
    /// Sends every character as one byte.
    void Output(const std::string& value);

    /// Moves what the OS holds into the receive buffer; returns how many bytes came. Used by
    /// the waits.
    std::size_t fillBuffer();
    /// Discards input the transport still holds beyond the OS (see SerialBackend::purgeInput).
    void purgeInput();
    /// Blocks until more input may have arrived (True), `wake` is set or `timeout` passes
    /// (negative: no limit). A hang-up raises.
    bool waitReadable(std::chrono::milliseconds timeout, WakeSignal& wake);
    /// Receives every byte as it goes to the line (sent True) or comes from it, in order, on
    /// the thread that uses the port; nullptr switches it off. The time of the call is the
    /// time of the transfer.
    /// Time one character takes on the line at the current Settings.
    std::chrono::steady_clock::duration characterTime() const { return charTime_; }
    using TraceHook = std::function<void(bool sent, const std::string& bytes)>;
    void setTrace(TraceHook hook) { trace_ = std::move(hook); }

private:
    SerialBackend& open();
    void forgetLook();

    int16_t commPort_ = 1;
    std::string settings_ = "9600,N,8,1";
    int16_t handshaking_ = 0;
    int16_t inputLen_ = 0;
    std::unique_ptr<SerialBackend> backend_;
    std::string buffer_;
    std::size_t bufferHead_ = 0;
    // What the OS held at the last look, and when; a look counts for one character time.
    std::size_t osPending_ = 0;
    std::chrono::steady_clock::time_point lastLook_{};
    std::chrono::steady_clock::duration charTime_{};
    TraceHook trace_;
};

/// One-shot timer: Enabled reads False once Interval milliseconds have passed since it
/// was enabled. That is the whole timer event. As with a timer control, enabling a timer
/// that is still running does not restart it; disable it first.
class OneShotTimer {
public:
    using Clock = std::chrono::steady_clock;

    int32_t Interval() const { return interval_; }
    void Interval(int32_t ms) { interval_ = ms; }
    bool Enabled() const;
    void Enabled(bool value);
    /// Deadline while armed.
    std::optional<Clock::time_point> deadline() const { return deadline_; }

private:
    int32_t interval_ = 10000;
    std::optional<Clock::time_point> deadline_;
};

/// The form that hosts the two controls, plus the wait primitive shared by all drivers.
class frmComm {
public:
    frmComm();
    ~frmComm();
    frmComm(const frmComm&) = delete;
    frmComm& operator=(const frmComm&) = delete;

    SerialControl mscComm;
    OneShotTimer tmrScan;

    /// One turn of a wait loop (the "DoEvents" of a driver): returns at once when new input
    /// came into the receive buffer, else blocks until input arrives, the armed timer runs
    /// out, Wake is called, or `pace` (when above zero) passes; then runs the host's yield
    /// callback. Never spins. A port that hung up raises 8020.
    void DoEvents(std::optional<std::chrono::milliseconds> pace = std::nullopt);
    /// A fixed pause the protocol demands.
    static void Sleep(int64_t milliseconds);
    /// Ends a DoEvents in progress (safe from any thread).
    void Wake();
    /// Host callback run on every DoEvents turn, at least every 50 ms while set.
    void setYield(std::function<void()> callback) { yield_ = std::move(callback); }
    /// The reader's CancelScan. While it is set a turn blocks for 50 ms at most, so a wait that
    /// watches it ends even when an earlier wait took the Wake.
    void setCancelFlag(const std::atomic<bool>* flag) { cancel_ = flag; }
    /// True while the reader's CancelScan is set.
    bool cancelRequested() const { return cancel_ && cancel_->load(); }
    /// Closes the port if open (the form's unload).
    void Unload();

private:
    WakeSignal wake_;
    std::function<void()> yield_;
    const std::atomic<bool>* cancel_ = nullptr;
};

} // namespace zebreader81
