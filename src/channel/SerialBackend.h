// What a serial transport must offer the serial control. One backend per platform or kind
// of port (POSIX termios now); drivers never see which one they have.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace zebreader81 {

/// Line settings parsed from the control's Settings text ("9600,N,8,1").
struct LineSettings {
    int32_t baud = 9600;
    char parity = 'N'; // N E O M S
    int dataBits = 8;
    float stopBits = 1.0f; // 1, 1.5 or 2

    /// Parses a Settings text; throws RuntimeError 380 (invalid property value) when it is
    /// not of the form rate,parity,data,stop with a known parity letter and stop bits.
    static LineSettings parse(const std::string& text);
};

/// An open port. Every failure is a RuntimeError with the serial control's number.
class SerialBackend {
public:
    virtual ~SerialBackend() = default;
    /// Applies line settings and handshaking (0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both);
    /// what the device refuses raises 8015.
    virtual void apply(const LineSettings& settings, int handshaking) = 0;
    /// Appends whatever the OS holds to `into` without blocking; returns the count.
    /// A hang-up or I/O error raises.
    virtual std::size_t readAvailable(std::string& into) = 0;
    /// Bytes the OS holds, not yet read.
    virtual std::size_t pendingCount() = 0;
    /// Writes every byte, completing partial writes.
    virtual void write(std::string_view bytes) = 0;
    /// Blocks until input is readable, `wakeFd` is signalled or `timeout` passes
    /// (negative: no limit). A hang-up raises.
    virtual void waitReadable(std::chrono::milliseconds timeout, int wakeFd) = 0;
};

/// Opens the device at `path` exclusively in raw mode: 8002 when it does not exist,
/// 8005 when another reader holds it, 8015 when its state cannot be set.
std::unique_ptr<SerialBackend> openPosixSerial(const std::string& path, const LineSettings& settings,
                                               int handshaking);

/// Device path of COM port `port`: ZEBREADER_COM<port>, else the stored port map,
/// else /dev/ttyS<port-1>.
std::string resolvePortPath(int port);

} // namespace zebreader81
