// Peers and port mapping for the channel tests.
#pragma once

#include "sim/Peer.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace zebreader81::test {

/// A peer the test drives by hand: it answers nothing by itself.
class LinePeer : public sim::Peer {
public:
    explicit LinePeer(sim::Transport transport = sim::defaultTransport()) : Peer(transport) { start(); }
    ~LinePeer() override { stop(); }
    void reply(std::string_view bytes) { send(bytes); }
    void replyAfter(std::chrono::milliseconds delay, std::string_view bytes) { sendAfter(delay, bytes); }

protected:
    void onReceive(std::string_view) override {}
};

/// A scanner of the probe protocol that is strict about framing: it answers a probe or a
/// firmware request only when that exact frame arrives, and ignores anything else.
class ProbePeer : public sim::Peer {
public:
    static constexpr char DC2 = 18, ESC = 27, CR = 13;
    static std::string probeFrame() { return std::string{DC2} + "R7777" + DC2 + "I00" + DC2 + "E"; }
    static std::string firmwareFrame() { return std::string{DC2, ESC} + "V" + DC2 + "E"; }

    explicit ProbePeer(std::string probeAnswer = {'G', CR}, std::string firmwareAnswer = {})
        : probeAnswer_(std::move(probeAnswer)), firmwareAnswer_(std::move(firmwareAnswer))
    {
        start();
    }
    ~ProbePeer() override { stop(); }
    int probes() const
    {
        std::lock_guard lock(stateMutex);
        return probes_;
    }

protected:
    void onReceive(std::string_view bytes) override
    {
        pending_.append(bytes);
        for (;;) {
            if (pending_.rfind(probeFrame(), 0) == 0) {
                pending_.erase(0, probeFrame().size());
                ++probes_;
                if (!probeAnswer_.empty())
                    send(probeAnswer_);
            } else if (pending_.rfind(firmwareFrame(), 0) == 0) {
                pending_.erase(0, firmwareFrame().size());
                if (!firmwareAnswer_.empty())
                    send(firmwareAnswer_);
            } else if (!pending_.empty() && probeFrame().rfind(pending_, 0) != 0 &&
                       firmwareFrame().rfind(pending_, 0) != 0) {
                pending_.erase(0, 1); // not the start of any frame: line noise
            } else {
                return;
            }
        }
    }

private:
    std::string probeAnswer_, firmwareAnswer_;
    std::string pending_;
    int probes_ = 0;
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
    PortMap(const PortMap&) = delete;
    PortMap& operator=(const PortMap&) = delete;
    void map(int port, const std::string& path) { sim::mapPort(port, path); }
};

} // namespace zebreader81::test
