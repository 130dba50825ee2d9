// Win32 backend of the serial control: \\.\COMn opened for overlapped I/O.
//
// A wait keeps one overlapped one-byte read pending and blocks on it and the wake event
// together; the byte it takes is handed out first by the next read. WaitCommEvent is not
// used: under Wine it ends at once with error 995 on a pseudo-terminal.
#include "channel/SerialBackend.h"

#include "core/basError.h"

#include <algorithm>
#include <windows.h>

namespace zebreader81 {

namespace {

using namespace std::chrono;

// Longest a write may wait for the line to take its bytes (flow control held off, say).
constexpr DWORD writeStallMs = 5000;
// Longest a read of bytes the driver already holds may take.
constexpr DWORD heldReadMs = 1000;
// Longest a close waits for queued output to leave before discarding it.
constexpr milliseconds closeDrain{2000};
constexpr DWORD queueSize = 8192;

DWORD waitMs(milliseconds timeout)
{
    return timeout.count() < 0 ? INFINITE
                               : static_cast<DWORD>(std::min<int64_t>(timeout.count(), INFINITE - 1));
}

BYTE parityCode(char parity)
{
    switch (parity) {
    case 'E': return EVENPARITY;
    case 'O': return ODDPARITY;
    case 'M': return MARKPARITY;
    case 'S': return SPACEPARITY;
    default: return NOPARITY;
    }
}

BYTE stopCode(float stopBits)
{
    if (stopBits == 1.5f)
        return ONE5STOPBITS;
    return stopBits == 2.0f ? TWOSTOPBITS : ONESTOPBIT;
}

// One overlapped operation's event and block.
struct Overlapped {
    Overlapped() { ov.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr); }
    ~Overlapped()
    {
        if (ov.hEvent)
            CloseHandle(ov.hEvent);
    }
    Overlapped(const Overlapped&) = delete;
    Overlapped& operator=(const Overlapped&) = delete;
    OVERLAPPED* reset()
    {
        HANDLE event = ov.hEvent;
        ov = {};
        ov.hEvent = event;
        ResetEvent(event);
        return &ov;
    }
    OVERLAPPED ov{};
};

class Win32Serial final : public SerialBackend {
public:
    explicit Win32Serial(HANDLE port) : port_(port) {}
    ~Win32Serial() override
    {
        const bool drained = drainBriefly();
        if (reading_) {
            CancelIoEx(port_, &read_.ov);
            DWORD n = 0;
            GetOverlappedResult(port_, &read_.ov, &n, TRUE);
        }
        PurgeComm(port_, PURGE_RXABORT | PURGE_RXCLEAR | (drained ? 0 : PURGE_TXABORT | PURGE_TXCLEAR));
        CloseHandle(port_);
    }
    Win32Serial(const Win32Serial&) = delete;
    Win32Serial& operator=(const Win32Serial&) = delete;

    bool ready() const { return read_.ov.hEvent && write_.ov.hEvent && held_.ov.hEvent; }

    void apply(const LineSettings& settings, int handshaking) override
    {
        DCB previous{};
        previous.DCBlength = sizeof previous;
        if (!GetCommState(port_, &previous))
            err::raise(err::CommStateNotSet);
        DCB dcb = previous;
        dcb.BaudRate = static_cast<DWORD>(settings.baud);
        dcb.ByteSize = static_cast<BYTE>(settings.dataBits);
        dcb.Parity = parityCode(settings.parity);
        dcb.StopBits = stopCode(settings.stopBits);
        dcb.fBinary = TRUE;
        dcb.fParity = settings.parity != 'N';
        dcb.fOutxDsrFlow = FALSE;
        dcb.fDsrSensitivity = FALSE;
        dcb.fDtrControl = DTR_CONTROL_ENABLE;
        dcb.fErrorChar = FALSE;
        dcb.fNull = FALSE;
        dcb.fAbortOnError = FALSE;
        const bool xonXoff = handshaking == 1 || handshaking == 3;
        const bool rtsCts = handshaking == 2 || handshaking == 3;
        dcb.fOutX = dcb.fInX = xonXoff;
        dcb.fTXContinueOnXoff = TRUE;
        dcb.XonChar = 17;
        dcb.XoffChar = 19;
        dcb.XonLim = queueSize / 4;
        dcb.XoffLim = queueSize / 4;
        dcb.fOutxCtsFlow = rtsCts;
        dcb.fRtsControl = rtsCts ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
        // A device may take a rate it cannot run and keep another; only the read-back tells.
        // A pseudo-terminal (a port Wine maps to one) always reads back 8 data bits, and its
        // parity then reads back as whatever the leftover flags make of it (odd parity gives
        // no valid value), so that framing is not held against it.
        DCB now{};
        now.DCBlength = sizeof now;
        const auto framed = [&dcb](const DCB& back) {
            return back.ByteSize == 8 || (back.ByteSize == dcb.ByteSize && back.Parity == dcb.Parity);
        };
        bool set = SetCommState(port_, &dcb);
        // A line without modem lines is a pseudo-terminal behind Wine. It holds 8 data bits
        // without parity only, and Linux refuses a request in which nothing else changes, so
        // such a line is given the framing it can hold.
        DWORD modem = 0;
        if (!set && dcb.ByteSize >= 5 && dcb.ByteSize <= 8 && !GetCommModemStatus(port_, &modem)) {
            dcb.ByteSize = 8;
            dcb.Parity = NOPARITY;
            dcb.fParity = FALSE;
            set = SetCommState(port_, &dcb);
        }
        if (!set || !GetCommState(port_, &now) || now.BaudRate != dcb.BaudRate || !framed(now) ||
            now.StopBits != dcb.StopBits) {
            SetCommState(port_, &previous);
            err::raise(err::CommStateNotSet);
        }
    }

    std::size_t readAvailable(std::string& into) override
    {
        harvest();
        std::size_t total = taken_.size();
        into += taken_;
        taken_.clear();
        // A pending wait read holds the line's next byte; what follows it waits for that.
        if (reading_)
            return total;
        for (DWORD n = queued(); n > 0; n = queued()) {
            char chunk[4096];
            const DWORD want = std::min<DWORD>(n, sizeof chunk);
            DWORD got = 0;
            if (!ReadFile(port_, chunk, want, &got, held_.reset())) {
                if (GetLastError() != ERROR_IO_PENDING)
                    err::raise(err::PortIo);
                if (WaitForSingleObject(held_.ov.hEvent, heldReadMs) != WAIT_OBJECT_0)
                    CancelIoEx(port_, &held_.ov);
                if (!GetOverlappedResult(port_, &held_.ov, &got, TRUE))
                    err::raise(err::PortIo);
            }
            into.append(chunk, got);
            total += got;
            if (got < want)
                break;
        }
        return total;
    }

    std::size_t pendingCount() override
    {
        harvest();
        return taken_.size() + queued();
    }

    void write(std::string_view bytes, std::size_t& written) override
    {
        written = 0;
        while (written < bytes.size()) {
            const DWORD want = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - written, 1u << 20));
            DWORD done = 0;
            if (!WriteFile(port_, bytes.data() + written, want, &done, write_.reset())) {
                if (GetLastError() != ERROR_IO_PENDING)
                    err::raise(err::PortIo);
                const bool finished = WaitForSingleObject(write_.ov.hEvent, writeStallMs) == WAIT_OBJECT_0;
                if (!finished)
                    CancelIoEx(port_, &write_.ov);
                const bool ok = GetOverlappedResult(port_, &write_.ov, &done, TRUE);
                written += done;
                if (!finished || !ok)
                    err::raise(err::PortIo);
                continue;
            }
            written += done;
        }
    }

    bool waitReadable(milliseconds timeout, WakeSignal& wake) override
    {
        harvest();
        if (!taken_.empty() || (!reading_ && queued() > 0))
            return true;
        if (!reading_) {
            DWORD got = 0;
            if (ReadFile(port_, &readByte_, 1, &got, read_.reset())) {
                if (got == 1)
                    taken_ += readByte_;
                return true;
            }
            if (GetLastError() != ERROR_IO_PENDING)
                err::raise(err::PortIo);
            reading_ = true;
        }
        HANDLE handles[2] = {read_.ov.hEvent, reinterpret_cast<HANDLE>(wake.nativeHandle())};
        const DWORD count = wake.nativeHandle() == -1 ? 1 : 2;
        const DWORD rc = WaitForMultipleObjects(count, handles, FALSE, waitMs(timeout));
        if (rc == WAIT_FAILED)
            err::raise(err::PortIo);
        if (rc != WAIT_OBJECT_0)
            return false;
        harvest();
        return true;
    }

private:
    // Takes the byte of a finished wait read; a read that ended in error is a hang-up.
    void harvest()
    {
        if (!reading_ || !HasOverlappedIoCompleted(&read_.ov))
            return;
        reading_ = false;
        DWORD got = 0;
        if (!GetOverlappedResult(port_, &read_.ov, &got, FALSE))
            err::raise(err::PortIo);
        if (got == 1)
            taken_ += readByte_;
    }

    DWORD queued()
    {
        DWORD errors = 0;
        COMSTAT stat{};
        if (!ClearCommError(port_, &errors, &stat))
            err::raise(err::PortIo);
        return stat.cbInQue;
    }

    // True when the output queue emptied in time.
    bool drainBriefly()
    {
        const auto until = steady_clock::now() + closeDrain;
        for (;;) {
            DWORD errors = 0;
            COMSTAT stat{};
            if (!ClearCommError(port_, &errors, &stat) || stat.cbOutQue == 0)
                return true;
            if (steady_clock::now() >= until)
                return false;
            Sleep(5);
        }
    }

    HANDLE port_;
    Overlapped read_; // the wait's one-byte read
    Overlapped held_; // reads of what the driver already holds
    Overlapped write_;
    bool reading_ = false;
    char readByte_ = 0;
    std::string taken_; // bytes wait reads took, not yet handed out
};

} // namespace

std::unique_ptr<SerialBackend> openSerialDevice(const std::string& path, const LineSettings& settings,
                                                int handshaking)
{
    HANDLE port = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OVERLAPPED, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        const DWORD e = GetLastError();
        err::raise(e == ERROR_ACCESS_DENIED || e == ERROR_SHARING_VIOLATION ? err::PortAlreadyOpen
                                                                            : err::InvalidPortNumber);
    }
    DCB probe{};
    probe.DCBlength = sizeof probe;
    // Anything that has no line state is no serial port.
    if (!GetCommState(port, &probe)) {
        CloseHandle(port);
        err::raise(err::InvalidPortNumber);
    }
    SetupComm(port, queueSize, queueSize);
    // Reads end only when their count is in: a read is issued for what the driver holds,
    // or for one byte to wait on.
    COMMTIMEOUTS timeouts{};
    SetCommTimeouts(port, &timeouts);
    auto serial = std::make_unique<Win32Serial>(port);
    if (!serial->ready())
        err::raise(err::OutOfMemory);
    serial->apply(settings, handshaking);
    // A freshly opened port holds nothing from before, as a real line that was closed.
    PurgeComm(port, PURGE_RXCLEAR);
    return serial;
}

std::string resolvePortPath(int port) { return "\\\\.\\COM" + std::to_string(port); }

} // namespace zebreader81
