// RFC 2217 backend: telnet to a network serial server with the COM port option. The Settings
// text and handshaking become the option's commands, each confirmed by the server; the data
// is escaped both ways; a purge of the server's receive side stands in for flushing the OS's
// input queue.
#include "channel/NetBackends.h"
#include "channel/Rfc2217.h"
#include "channel/TcpLink.h"

#include "core/basError.h"

#include <algorithm>
#include <chrono>

namespace zebreader81::net {

namespace {

using namespace std::chrono;
using Clock = steady_clock;

// Longest the server may take to agree to the option or to confirm a command.
constexpr milliseconds confirmLimit{3000};

class Rfc2217Serial final : public SerialBackend {
public:
    Rfc2217Serial(const PortUrl& address, const std::string& url) : link_(address, url)
    {
        send(rfc2217::greeting());
        const auto until = Clock::now() + confirmLimit;
        while (!decoder_.comPortAgreed()) {
            if (decoder_.comPortRefused() || !waitUntil(until))
                link_.fail(err::CommStateNotSet, "the server does not offer the COM port option (RFC 2217)");
            pump();
        }
    }

    void apply(const LineSettings& settings, int handshaking) override
    {
        std::string why;
        const auto commands = rfc2217::lineCommands(settings, handshaking, why);
        if (!commands)
            link_.fail(err::CommStateNotSet, why);
        std::string out;
        for (const auto& c : *commands)
            out += rfc2217::command(c.command, c.value);
        replies_.clear();
        send(out);
        const auto until = Clock::now() + confirmLimit;
        for (const auto& c : *commands) {
            const auto reply = awaitReply(c.command, c.value, until);
            if (reply.value != c.value)
                link_.fail(err::CommStateNotSet, "the server answered " +
                                                     rfc2217::describe(c.command, reply.value) + " to " +
                                                     rfc2217::describe(c.command, c.value));
        }
    }

    std::size_t readAvailable(std::string& into) override
    {
        pump();
        const std::size_t count = data_.size();
        into += data_;
        data_.clear();
        replies_.clear();
        return count;
    }

    std::size_t pendingCount() override
    {
        pump();
        return data_.size();
    }

    void write(std::string_view bytes, std::size_t& written) override
    {
        const std::string escaped = rfc2217::escape(bytes);
        std::size_t sent = 0;
        try {
            link_.write(escaped, sent);
        } catch (...) {
            written = rfc2217::unescapedCount(bytes, sent);
            throw;
        }
        written = bytes.size();
    }

    bool waitReadable(milliseconds timeout, WakeSignal& wake) override
    {
        // Negotiation and notifications wake the poll too, but are no input.
        const auto until = Clock::now() + timeout;
        while (data_.empty()) {
            const auto left = timeout.count() < 0
                                  ? timeout
                                  : std::max(milliseconds(0), ceil<milliseconds>(until - Clock::now()));
            if (!link_.wait(left, static_cast<int>(wake.nativeHandle())))
                return false;
            pump();
            if (data_.empty() && timeout.count() >= 0 && Clock::now() >= until)
                return false;
        }
        return true;
    }

    // What the server confirms its purge after went through it before the purge, so it is
    // dropped as an OS input flush would drop it.
    void purgeInput() override
    {
        const std::string value{static_cast<char>(rfc2217::PurgeReceive)};
        replies_.clear();
        send(rfc2217::command(rfc2217::PurgeData, value));
        const auto reply = awaitReply(rfc2217::PurgeData, value, Clock::now() + confirmLimit);
        data_.erase(0, std::min(reply.dataOffset, data_.size()));
        replies_.clear();
    }

private:
    void send(const std::string& bytes)
    {
        std::size_t sent = 0;
        link_.write(bytes, sent);
    }

    // Takes what the socket holds through the decoder and answers the negotiation.
    void pump()
    {
        std::string raw;
        if (link_.readAvailable(raw) == 0)
            return;
        std::string answer;
        decoder_.feed(raw, data_, replies_, answer);
        if (!answer.empty())
            send(answer);
    }

    // False when `until` passed without anything from the server.
    bool waitUntil(Clock::time_point until)
    {
        const auto left = ceil<milliseconds>(until - Clock::now());
        return left.count() > 0 && link_.wait(left, -1);
    }

    rfc2217::Reply awaitReply(uint8_t command, const std::string& value, Clock::time_point until)
    {
        for (;;) {
            const auto it = std::find_if(replies_.begin(), replies_.end(),
                                         [command](const rfc2217::Reply& r) { return r.command == command; });
            if (it != replies_.end()) {
                auto reply = *it;
                replies_.erase(replies_.begin(), it + 1);
                return reply;
            }
            if (!waitUntil(until))
                link_.fail(err::CommStateNotSet,
                           "the server did not confirm " + rfc2217::describe(command, value));
            pump();
        }
    }

    TcpLink link_;
    rfc2217::Decoder decoder_;
    // Data decoded but not handed out yet, and the option's messages that came with it.
    std::string data_;
    std::vector<rfc2217::Reply> replies_;
};

} // namespace

std::unique_ptr<SerialBackend> openRfc2217Serial(const PortUrl& address, const std::string& url,
                                                 const LineSettings& settings, int handshaking)
{
    auto port = std::make_unique<Rfc2217Serial>(address, url);
    port->apply(settings, handshaking);
    // A freshly opened port holds nothing from before, as a real line that was closed.
    port->purgeInput();
    return port;
}

} // namespace zebreader81::net
