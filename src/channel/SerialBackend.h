// What a serial transport must offer the serial control. One backend per platform or kind
// of port (POSIX termios now); drivers never see which one they have.
#pragma once

#include "channel/WakeSignal.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
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
    /// not of the form rate,parity,data,stop with a positive rate, a parity letter of NEOMS
    /// (either case), data bits 4 to 8 and stop bits 1, 1.5 or 2. Blanks are ignored.
    /// Whether the device can carry it is decided when it is applied (8015).
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
    /// Writes every byte, completing partial writes and waiting out a full output queue (a
    /// bounded while); `written` tells how far it got when it raises.
    virtual void write(std::string_view bytes, std::size_t& written) = 0;
    /// Discards input still held beyond this process, where the transport keeps some (a network
    /// server's buffer); a drain calls it once the buffer is empty.
    virtual void purgeInput() {}
    /// Blocks until input is readable (True), `wake` is set or `timeout` passes (negative: no
    /// limit); a set `wake` is left set. A hang-up raises.
    virtual bool waitReadable(std::chrono::milliseconds timeout, WakeSignal& wake) = 0;
};

/// Opens the device at `path` (resolvePortPath) exclusively in raw mode with an empty input
/// queue: 8002 when it does not exist or is no serial line, 8005 when another reader holds it,
/// 8015 when it refuses the settings. On POSIX a socket:// or rfc2217:// path opens a network port.
std::unique_ptr<SerialBackend> openSerialDevice(const std::string& path, const LineSettings& settings,
                                                int handshaking);

/// Device path of COM port `port`. POSIX: ZEBREADER_COM<port>, else the stored port map,
/// else /dev/ttyS<port-1>. Win32: \\.\COM<port>.
std::string resolvePortPath(int port);

} // namespace zebreader81
