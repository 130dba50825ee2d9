// A TCP connection to a network serial server, with the waits a serial backend needs. The
// only place that knows sockets.
#pragma once

#include "channel/NetworkPort.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zebreader81::net {

/// Throws RuntimeError `number` whose description names the port's address and the reason.
[[noreturn]] void raise(int32_t number, const std::string& url, const std::string& reason);

class TcpLink {
public:
    /// Resolves the host and connects within a few seconds; 8002 naming `url` and the reason.
    TcpLink(const PortUrl& address, std::string url);
    /// Ends the connection after what was written has gone (a bounded while).
    ~TcpLink();
    TcpLink(const TcpLink&) = delete;
    TcpLink& operator=(const TcpLink&) = delete;

    const std::string& url() const { return url_; }

    /// Appends what the socket holds to `into` without blocking; returns the count. A server
    /// that closed the connection or failed raises 8020, after the bytes it sent before that.
    std::size_t readAvailable(std::string& into);
    /// Bytes the socket holds, not yet read.
    std::size_t pendingCount();
    /// Writes every byte, waiting out a full send queue for a bounded while; `written` tells
    /// how far it got when it raises (8020).
    void write(std::string_view bytes, std::size_t& written);
    /// Blocks until the socket has something to report (True: input, or a close or failure
    /// the next read raises), `wakeFd` (when not -1) is signalled or `timeout` passes
    /// (negative: no limit).
    bool wait(std::chrono::milliseconds timeout, int wakeFd);

    /// Raises `number` for this connection with `reason`.
    [[noreturn]] void fail(int32_t number, const std::string& reason) const { raise(number, url_, reason); }

private:
    int fd_ = -1;
    std::string url_;
    bool closedAfterData_ = false;
};

} // namespace zebreader81::net
