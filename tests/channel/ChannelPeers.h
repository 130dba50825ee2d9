// Peers and port mapping for the channel tests.
#pragma once

#include "sim/Peer.h"

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace zebreader81::test {

/// A peer the test drives by hand: it answers only a message in `answers` that arrives whole
/// (one write of the driver), and hangs up from its own handler when `hangUpOn` arrives.
class LinePeer : public sim::Peer {
public:
    explicit LinePeer(sim::Transport transport = sim::defaultTransport(), std::string hangUpOn = {})
        : Peer(transport), hangUpOn_(std::move(hangUpOn))
    {
        start();
    }
    ~LinePeer() override { stop(); }
    void reply(std::string_view bytes) { send(bytes); }
    void replyAfter(std::chrono::milliseconds delay, std::string_view bytes) { sendAfter(delay, bytes); }
    std::map<std::string, std::string, std::less<>> answers; // set before the driver writes

protected:
    void onReceive(std::string_view bytes) override
    {
        if (!hangUpOn_.empty() && bytes.find(hangUpOn_) != std::string_view::npos)
            hangUp();
        else if (const auto a = answers.find(bytes); a != answers.end() && !a->second.empty())
            send(a->second);
    }

private:
    const std::string hangUpOn_;
};

/// Points COM ports at paths for the life of the object, and every other port of 1 to 16 at
/// nothing, so that no test touches the machine's own serial ports.
class PortMap {
public:
    PortMap()
    {
        for (int port = 1; port <= 16; ++port)
            sim::mapPort(port, "/nonexistent/zebreader-com" + std::to_string(port));
    }
    ~PortMap()
    {
        for (int port = 1; port <= 16; ++port)
            unsetenv(("ZEBREADER_COM" + std::to_string(port)).c_str());
    }
    void map(int port, const std::string& path) { sim::mapPort(port, path); }
};

} // namespace zebreader81::test
