// The network backends against scripted servers on loopback ports: what a failing server
// looks like to the reader, data both ways, the COM port option's confirmations and purge.
#include "channel/ChannelPeers.h"
#include "channel/Rfc2217.h"
#include "channel/frmComm.h"
#include "core/basError.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;
using namespace rfc2217;

std::string bytes(std::initializer_list<int> values)
{
    std::string out;
    for (const int v : values)
        out += static_cast<char>(v);
    return out;
}

// One accepted connection, read by the script on the server's thread.
class Connection {
public:
    explicit Connection(int fd) : fd_(fd) {}
    void send(std::string_view b) { [[maybe_unused]] auto n = ::send(fd_, b.data(), b.size(), MSG_NOSIGNAL); }
    // Waits up to `limit` for more bytes; False when the client closed or nothing came.
    bool readMore(std::chrono::milliseconds limit = 10s)
    {
        pollfd pfd{fd_, POLLIN, 0};
        if (poll(&pfd, 1, static_cast<int>(limit.count())) <= 0)
            return false;
        char chunk[4096];
        const ssize_t n = recv(fd_, chunk, sizeof chunk, 0);
        if (n <= 0)
            return false;
        received.append(chunk, static_cast<std::size_t>(n));
        return true;
    }
    std::string received;

private:
    int fd_;
};

// A server on a free loopback port that accepts one connection and runs `script` on it.
class FakeServer {
public:
    explicit FakeServer(std::function<void(Connection&)> script)
    {
        listen_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        EXPECT_EQ(bind(listen_, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
        EXPECT_EQ(listen(listen_, 1), 0);
        getsockname(listen_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this, script = std::move(script)] {
            pollfd pfd{listen_, POLLIN, 0};
            if (poll(&pfd, 1, 10000) <= 0)
                return;
            const int fd = accept4(listen_, nullptr, nullptr, SOCK_CLOEXEC);
            Connection c(fd);
            script(c);
            close(fd);
        });
    }
    ~FakeServer()
    {
        thread_.join();
        close(listen_);
    }
    std::string url(const std::string& scheme) const
    {
        return scheme + "://127.0.0.1:" + std::to_string(port_);
    }

private:
    int listen_ = -1;
    uint16_t port_ = 0;
    std::thread thread_;
};

// What a client sent a telnet server: the data (IAC doubling undone) and the COM port commands.
struct ClientStream {
    std::string data;
    std::vector<std::pair<uint8_t, std::string>> commands;
};

ClientStream parseClient(const std::string& s)
{
    ClientStream out;
    std::size_t i = 0;
    while (i < s.size()) {
        const auto b = static_cast<uint8_t>(s[i]);
        if (b != IAC) {
            out.data += s[i++];
            continue;
        }
        if (i + 1 >= s.size())
            break;
        const auto verb = static_cast<uint8_t>(s[i + 1]);
        if (verb == IAC) {
            out.data += s[i];
            i += 2;
        } else if (verb == SB) {
            std::string body;
            std::size_t j = i + 3;
            for (; j + 1 < s.size() && !(s[j] == char(IAC) && s[j + 1] == char(SE)); ++j)
                body += s[j] == char(IAC) ? s[++j] : s[j];
            if (j + 1 >= s.size())
                break;
            if (!body.empty())
                out.commands.emplace_back(static_cast<uint8_t>(body[0]), body.substr(1));
            i = j + 2;
        } else {
            i += verb >= WILL ? 3 : 2;
        }
    }
    return out;
}

// A telnet server with the COM port option: greets as ser2net does, answers each command with
// `answer` (by default its confirmation) and the client's data with `onData`, until the client
// goes.
struct TelnetScript {
    std::function<std::string(uint8_t command, const std::string& value, int nth)> answer =
        [](uint8_t command, const std::string& value, int) {
            return rfc2217::command(static_cast<uint8_t>(command + 100), value);
        };
    std::function<std::string(const std::string& data)> onData = [](const std::string&) { return ""; };
    std::string greeting =
        bytes({IAC, WILL, SGA, IAC, DO, SGA, IAC, DO, BINARY, IAC, WILL, BINARY, IAC, DO, 44});
    // Every command the client sent, for the test to look at afterwards.
    std::vector<std::pair<uint8_t, std::string>> seen;

    void operator()(Connection& c)
    {
        c.send(greeting);
        std::size_t handled = 0, dataSeen = 0;
        while (c.readMore()) {
            const auto stream = parseClient(c.received);
            for (; handled < stream.commands.size(); ++handled) {
                const auto& [command, value] = stream.commands[handled];
                seen.push_back(stream.commands[handled]);
                const int nth = static_cast<int>(std::count_if(
                    seen.begin(), seen.end(), [&](const auto& s) { return s.first == command; }));
                c.send(answer(command, value, nth));
            }
            if (stream.data.size() > dataSeen) {
                dataSeen = stream.data.size();
                c.send(onData(stream.data));
            }
        }
    }
};

struct NetPort : ::testing::Test {
    PortMap ports;
    frmComm fc;
    SerialControl& com = fc.mscComm;

    // The error number and description opening `url` raises (0 when it opens).
    std::pair<int32_t, std::string> openError(const std::string& url, int16_t handshaking = 0)
    {
        ports.map(4, url);
        com.CommPort(4);
        com.Handshaking(handshaking);
        try {
            com.PortOpen(true);
        } catch (const RuntimeError& e) {
            return {e.number(), e.what()};
        }
        return {0, ""};
    }
    // Waits until `n` bytes are buffered, for the armed timer at most; then takes them.
    std::string take(int n)
    {
        fc.tmrScan.Interval(5000);
        fc.tmrScan.Enabled(true);
        while (com.InBufferCount() < n && fc.tmrScan.Enabled())
            fc.DoEvents();
        fc.tmrScan.Enabled(false);
        com.InputLen(0);
        return com.Input();
    }
};

TEST_F(NetPort, AServerThatCannotBeReachedIsNamedWithTheReason)
{
    // A port nobody listens on: bound once by us, then let go.
    std::string refused;
    {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
        getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
        refused = "socket://127.0.0.1:" + std::to_string(ntohs(a.sin_port));
        close(fd);
    }
    // A label longer than 63 characters cannot go into a query, so the resolver refuses the
    // name without asking the network.
    const std::string unknown = "rfc2217://" + std::string(70, 'x') + ".invalid:2003";
    const struct {
        std::string url;
        std::string reason;
    } cases[] = {
        {refused, "Connection refused"},
        {"rfc2217://" + refused.substr(9), "Connection refused"},
        {unknown, ""},
        {"socket://127.0.0.1", "socket://HOST:PORT"},
        {"rfc2217://127.0.0.1:99999", "rfc2217://HOST:PORT"},
    };
    for (const auto& c : cases) {
        const auto [number, description] = openError(c.url);
        EXPECT_EQ(number, err::InvalidPortNumber) << c.url;
        EXPECT_EQ(description.rfind(err::description(err::InvalidPortNumber) + " (" + c.url + ": ", 0), 0u)
            << description;
        EXPECT_NE(description.find(c.reason), std::string::npos) << description;
        EXPECT_FALSE(com.PortOpen());
    }
}

TEST_F(NetPort, RawServerCarriesBytesAsTheyAreAndItsCloseIsAPortError)
{
    FakeServer server([](Connection& c) {
        while (c.received.size() < 6 && c.readMore()) {
        }
        c.send(bytes({'A', 'B', 255}));
        while (c.received.size() < 9 && c.readMore()) {
        }
        c.send("XY");
    });
    const auto url = server.url("socket");
    ASSERT_EQ(openError(url).first, 0);
    com.Output(bytes({'h', 'e', 'l', 'l', 'o', 255}));
    EXPECT_EQ(take(3), bytes({'A', 'B', 255}));

    // Wake ends a wait that has no other end in sight, long before its timer.
    fc.tmrScan.Interval(30000);
    fc.tmrScan.Enabled(true);
    std::thread waker([this] {
        std::this_thread::sleep_for(100ms);
        fc.Wake();
    });
    fc.DoEvents();
    waker.join();
    EXPECT_TRUE(fc.tmrScan.Enabled());
    fc.tmrScan.Enabled(false);

    // The bytes before the close arrive; the close is then reported with the address.
    com.Output("bye");
    EXPECT_EQ(take(2), "XY");
    try {
        for (int turn = 0; turn < 100; ++turn)
            fc.DoEvents(100ms);
        ADD_FAILURE() << "the close was not noticed";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), err::PortIo);
        EXPECT_EQ(std::string(e.what()),
                  err::description(err::PortIo) + " (" + url + ": the server closed the connection)");
    }
}

TEST_F(NetPort, Rfc2217SetsTheLineEscapesDataAndPurgesTheServersInput)
{
    TelnetScript script;
    script.answer = [](uint8_t command, const std::string& value, int nth) {
        std::string out;
        // The second purge finds stale bytes in the server, and fresh ones follow it.
        if (command == PurgeData && nth == 2)
            out += "stale";
        out += rfc2217::command(static_cast<uint8_t>(command + 100), value);
        if (command == PurgeData && nth == 2)
            out += "fresh";
        return out;
    };
    script.onData = [](const std::string& data) {
        return data == bytes({'a', 255, 'b'}) ? bytes({'x', IAC, IAC, 'y'}) : std::string();
    };
    {
        FakeServer server(std::ref(script));
        ASSERT_EQ(openError(server.url("rfc2217")).first, 0);
        com.Output(bytes({'a', 255, 'b'}));
        EXPECT_EQ(take(3), bytes({'x', 255, 'y'}));
        com.Settings("19200,E,7,2");
        com.Handshaking(2);
        // Bytes that were in the server before the purge never reach the buffer.
        com.purgeInput();
        EXPECT_EQ(take(5), "fresh");
        com.PortOpen(false);
    }
    using Seen = std::vector<std::pair<uint8_t, std::string>>;
    const Seen expected = {// At open: the default settings, then a purge.
                           {SetBaudRate, bytes({0, 0, 0x25, 0x80})},
                           {SetDataSize, bytes({8})},
                           {SetParity, bytes({1})},
                           {SetStopSize, bytes({1})},
                           {SetControl, bytes({1})},
                           {PurgeData, bytes({1})},
                           // Settings and Handshaking while open each set the whole line.
                           {SetBaudRate, bytes({0, 0, 0x4b, 0})},
                           {SetDataSize, bytes({7})},
                           {SetParity, bytes({3})},
                           {SetStopSize, bytes({2})},
                           {SetControl, bytes({1})},
                           {SetBaudRate, bytes({0, 0, 0x4b, 0})},
                           {SetDataSize, bytes({7})},
                           {SetParity, bytes({3})},
                           {SetStopSize, bytes({2})},
                           {SetControl, bytes({3})},
                           {PurgeData, bytes({1})}};
    EXPECT_EQ(script.seen, expected);
}

TEST_F(NetPort, Rfc2217SettingsTheServerDoesNotConfirmAre8015)
{
    const struct {
        const char* what;
        std::function<void(TelnetScript&)> setUp;
        int16_t handshaking;
        std::string reason;
    } cases[] = {
        {"another rate",
         [](TelnetScript& s) {
             s.answer = [](uint8_t command, const std::string& value, int) {
                 return rfc2217::command(static_cast<uint8_t>(command + 100),
                                         command == SetBaudRate ? bytes({0, 0, 0x4b, 0}) : value);
             };
         },
         0, "the server answered SET-BAUDRATE 19200 to SET-BAUDRATE 9600"},
        {"no answer",
         [](TelnetScript& s) {
             s.answer = [](uint8_t command, const std::string& value, int) {
                 return command == SetDataSize ? std::string()
                                               : rfc2217::command(static_cast<uint8_t>(command + 100), value);
             };
         },
         0, "the server did not confirm SET-DATASIZE 8"},
        {"option refused",
         [](TelnetScript& s) {
             s.greeting = bytes({IAC, DONT, 44});
         },
         0, "the server does not offer the COM port option (RFC 2217)"},
        {"both handshakes", [](TelnetScript&) {}, 3,
         "the COM port option cannot set XON/XOFF and RTS/CTS handshaking together"},
    };
    for (const auto& c : cases) {
        TelnetScript script;
        c.setUp(script);
        FakeServer server(std::ref(script));
        const auto url = server.url("rfc2217");
        const auto [number, description] = openError(url, c.handshaking);
        EXPECT_EQ(number, err::CommStateNotSet) << c.what;
        EXPECT_EQ(description, err::description(err::CommStateNotSet) + " (" + url + ": " + c.reason + ")")
            << c.what;
    }
}

} // namespace
} // namespace zebreader81::test
