// A network serial server in front of a simulator's line: Debian's ser2net on a loopback
// port, raw or telnet with the COM port option (RFC 2217), for tests and benchmarks.
#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace zebreader81::sim {

class Ser2net {
public:
    enum class Mode { Raw, Rfc2217 };

    /// Where the program is installed; empty when it is not.
    static std::string program();

    /// Starts ser2net serving `device` on a free port of 127.0.0.1 and waits (a few seconds at
    /// most) until it listens; running() tells whether it does.
    Ser2net(const std::string& device, Mode mode);
    /// Stops the server.
    ~Ser2net();
    Ser2net(const Ser2net&) = delete;
    Ser2net& operator=(const Ser2net&) = delete;

    bool running() const { return pid_ > 0 && listening_; }
    /// The port address a reader opens: socket://127.0.0.1:P or rfc2217://127.0.0.1:P.
    const std::string& url() const { return url_; }
    /// What ser2net wrote, for a failure message.
    std::string log() const;
    /// Kills the server at once, as a server box losing power would drop its connections.
    void kill();

private:
    pid_t pid_ = -1;
    bool listening_ = false;
    std::string dir_;
    std::string url_;
};

} // namespace zebreader81::sim
