// The two network backends, chosen by NetworkPort from the address's scheme.
#pragma once

#include "channel/NetworkPort.h"

namespace zebreader81::net {

/// Raw TCP: the bytes as they are; the line settings are the server's.
std::unique_ptr<SerialBackend> openTcpSerial(const PortUrl& address, const std::string& url);
/// Telnet with the COM port option: settings applied and confirmed, receive side purged.
std::unique_ptr<SerialBackend> openRfc2217Serial(const PortUrl& address, const std::string& url,
                                                 const LineSettings& settings, int handshaking);

} // namespace zebreader81::net
