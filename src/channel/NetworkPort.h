// Ports on a network serial server: `socket://HOST:PORT` carries the bytes as they are (the
// server keeps its own line settings), `rfc2217://HOST:PORT` is telnet with the COM port
// option, which sets the server's line from the Settings text.
#pragma once

#include "channel/SerialBackend.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zebreader81 {

/// A network port address split into its parts.
struct PortUrl {
    enum class Kind { Raw, Rfc2217 };
    Kind kind = Kind::Raw;
    std::string host; ///< name or address, an IPv6 address without its brackets
    uint16_t port = 0;
};

/// True when `path` starts with one of the network schemes (in any case), well formed or not:
/// such a path is never a device file.
bool isNetworkPort(std::string_view path);
/// Splits `scheme://HOST:PORT` (an IPv6 address in brackets); nullopt when it is not a network
/// port or not well formed (no host, a port outside 1 to 65535, anything after the port).
std::optional<PortUrl> parsePortUrl(std::string_view path);

/// Connects to the server at `url` and sets it up like a freshly opened line: 8002 naming the
/// address and the reason when it cannot be reached, 8015 when it refuses the settings.
std::unique_ptr<SerialBackend> openNetworkSerial(const std::string& url, const LineSettings& settings,
                                                 int handshaking);

} // namespace zebreader81
