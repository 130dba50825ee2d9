// Network serial ports: the RFC 2217 codec on bytes, addresses, and the backends against
// scripted servers on loopback ports (failures as the reader sees them, data both ways, the COM
// port option's confirmations and purge).
#include "channel/ChannelPeers.h"
#include "channel/NetworkPort.h"
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

// IAC SB COM-PORT-OPTION code value IAC SE, with every IAC in the value doubled.
std::string sb(int code, const std::string& value)
{
    std::string out = bytes({IAC, SB, COM_PORT_OPTION, code});
    for (const char c : value)
        out += c == char(IAC) ? std::string(2, c) : std::string(1, c);
    return out + bytes({IAC, SE});
}
std::string sb(int code, std::initializer_list<int> value) { return sb(code, bytes(value)); }
// The five commands of a line set-up: rate, data size, parity, stop size, control; with
// `answer` 100 the server's confirmations of them.
std::string line(std::initializer_list<int> rate, int size, int parity, int stop, int control, int answer = 0)
{
    return sb(SetBaudRate + answer, rate) + sb(SetDataSize + answer, {size}) +
           sb(SetParity + answer, {parity}) + sb(SetStopSize + answer, {stop}) +
           sb(SetControl + answer, {control});
}
// What our client and a ser2net 4 server say first.
const std::string clientHello =
    bytes({IAC, WILL, 44, IAC, WILL, BINARY, IAC, DO, BINARY, IAC, WILL, SGA, IAC, DO, SGA});
const std::string serverHello =
    bytes({IAC, WILL, SGA, IAC, DO, SGA, IAC, DO, BINARY, IAC, WILL, BINARY, IAC, DO, 44});

TEST(Rfc2217Codec, DataEscapingDoublesEveryIacAndCountsWhatWentOut)
{
    const std::string data = bytes({'a', 255, 'b', 255, 255});
    EXPECT_EQ(escape(data), bytes({'a', 255, 255, 'b', 255, 255, 255, 255}));
    EXPECT_EQ(escape(""), "");
    // A write cut short in the middle of a doubled IAC has not sent that byte.
    const std::pair<std::size_t, std::size_t> sentToCount[] = {{0, 0}, {2, 1}, {3, 2}, {7, 4}, {8, 5}};
    for (const auto& [sent, count] : sentToCount)
        EXPECT_EQ(unescapedCount(data, sent), count) << sent;
}

TEST(Rfc2217Codec, SettingsBecomeTheFiveCommandsInOrder)
{
    const struct {
        const char* settings;
        int handshaking;
        std::string expected;
    } cases[] = {
        {"9600,N,8,1", 0, line({0, 0, 0x25, 0x80}, 8, 1, 1, 1)},
        {"19200,E,7,2", 1, line({0, 0, 0x4b, 0}, 7, 3, 2, 2)},
        {"38400,O,5,1.5", 2, line({0, 0, 0x96, 0}, 5, 2, 3, 3)},
        {"1200,M,6,1", 0, line({0, 0, 4, 0xb0}, 6, 4, 1, 1)},
        // 65,535 baud carries two IAC bytes in its value: doubled inside the subnegotiation.
        {"65535,S,8,1", 0, line({0, 0, 255, 255}, 8, 5, 1, 1)},
    };
    for (const auto& c : cases) {
        std::string why, wire;
        const auto commands = lineCommands(LineSettings::parse(c.settings), c.handshaking, why);
        ASSERT_TRUE(commands) << c.settings;
        for (const auto& s : *commands)
            wire += command(s.command, s.value);
        EXPECT_EQ(wire, c.expected) << c.settings;
    }
    EXPECT_EQ(line({0, 0, 255, 255}, 8, 5, 1, 1).substr(0, 12),
              bytes({IAC, SB, 44, 1, 0, 0, 255, 255, 255, 255, IAC, SE}));
    std::string why;
    EXPECT_FALSE(lineCommands(LineSettings::parse("9600,N,4,1"), 0, why));
    EXPECT_NE(why.find("5 to 8 data bits"), std::string::npos);
    EXPECT_FALSE(lineCommands(LineSettings::parse("9600,N,8,1"), 3, why));
    EXPECT_NE(why.find("together"), std::string::npos);
    EXPECT_EQ(describe(SetBaudRate, bytes({0, 0, 0x4b, 0})), "SET-BAUDRATE 19200");
    EXPECT_EQ(describe(SetControl, bytes({3})), "SET-CONTROL 3");
}

TEST(Rfc2217Codec, DecoderAgreesToTheServersGreetingAndRefusesEcho)
{
    // What ser2net 4 sends on a new connection.
    const std::string greeting =
        bytes({IAC, WILL,   SGA, IAC,  DO,     SGA, IAC, WILL,           1, IAC, DONT, 1, IAC,
               DO,  BINARY, IAC, WILL, BINARY, IAC, DO,  COM_PORT_OPTION});
    Decoder d;
    std::string data, answer;
    std::vector<Reply> replies;
    EXPECT_FALSE(d.comPortAgreed());
    d.feed(greeting, data, replies, answer);
    EXPECT_TRUE(d.comPortAgreed());
    EXPECT_FALSE(d.comPortRefused());
    // Only echo was not asked for; everything else confirms our own requests.
    EXPECT_EQ(answer, bytes({IAC, DONT, 1}));
    EXPECT_TRUE(data.empty());
    // The same again changes nothing, so nothing is answered (no negotiation loop).
    answer.clear();
    d.feed(bytes({IAC, DO, SGA, IAC, WILL, BINARY}), data, replies, answer);
    EXPECT_EQ(answer, "");
    // Options we do not know are refused; a refused option that was on is turned off.
    d.feed(bytes({IAC, DO, 24, IAC, WILL, 31, IAC, DONT, BINARY}), data, replies, answer);
    EXPECT_EQ(answer, bytes({IAC, WONT, 24, IAC, DONT, 31, IAC, WONT, BINARY}));

    Decoder refusing;
    refusing.feed(bytes({IAC, DONT, COM_PORT_OPTION}), data, replies, answer);
    EXPECT_TRUE(refusing.comPortRefused());
    EXPECT_FALSE(refusing.comPortAgreed());
}

TEST(Rfc2217Codec, DecoderSplitsDataRepliesAndNegotiationWhereverTheChunksEnd)
{
    // Data with a doubled IAC, a confirmation of 19200 baud, a purge answer, a line state
    // notice, a NOP, a signature reply too long to keep, and data after each; then a
    // confirmation whose value holds doubled IACs.
    const std::string stream = bytes({'A', IAC, IAC, 'B'}) + sb(101, {0, 0, 0x4b, 0}) + "CD" + sb(112, {1}) +
                               bytes({IAC, 241}) + "E" + sb(106, {0x60}) + sb(100, std::string(300, 'x')) +
                               bytes({IAC, IAC}) + "F" + sb(101, {0, 0, 255, 255});
    for (std::size_t cut1 = 0; cut1 <= stream.size(); cut1 += 7)
        for (const std::size_t cut2 :
             {cut1, std::min(stream.size(), cut1 + 1), std::min(stream.size(), cut1 + 3)}) {
            Decoder d;
            std::string data, answer;
            std::vector<Reply> replies;
            d.feed(std::string_view(stream).substr(0, cut1), data, replies, answer);
            d.feed(std::string_view(stream).substr(cut1, cut2 - cut1), data, replies, answer);
            d.feed(std::string_view(stream).substr(cut2), data, replies, answer);
            ASSERT_EQ(data, bytes({'A', 255, 'B', 'C', 'D', 'E', 255, 'F'}))
                << "cut at " << cut1 << ", " << cut2;
            ASSERT_EQ(replies.size(), 4u) << "cut at " << cut1;
            const std::tuple<uint8_t, std::string, std::size_t> expected[] = {
                {SetBaudRate, bytes({0, 0, 0x4b, 0}), 3},
                {PurgeData, bytes({1}), 5},
                {NotifyLineState, bytes({0x60}), 6},
                {SetBaudRate, bytes({0, 0, 255, 255}), 8}};
            for (std::size_t i = 0; i < 4; ++i)
                EXPECT_EQ(std::tie(replies[i].command, replies[i].value, replies[i].dataOffset), expected[i]);
            EXPECT_EQ(answer, "");
        }
}

TEST(NetworkPortAddress, SchemesHostsAndPorts)
{
    using K = PortUrl::Kind;
    const std::tuple<const char*, K, const char*, int> valid[] = {
        {"socket://127.0.0.1:4001", K::Raw, "127.0.0.1", 4001},
        {"rfc2217://scanbox:2003", K::Rfc2217, "scanbox", 2003},
        {"RFC2217://[::1]:65535", K::Rfc2217, "::1", 65535},
        {"socket://desk-3.example.org:1", K::Raw, "desk-3.example.org", 1},
    };
    for (const auto& [text, kind, host, port] : valid) {
        EXPECT_TRUE(isNetworkPort(text)) << text;
        const auto url = parsePortUrl(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(std::tie(url->kind, url->host, url->port), std::make_tuple(kind, std::string(host), port));
    }
    for (const char* text : {"/dev/ttyUSB0", "tcp://host:1"}) {
        EXPECT_FALSE(isNetworkPort(text)) << text;
        EXPECT_FALSE(parsePortUrl(text)) << text;
    }
    for (const char* text :
         {"socket://host", "socket://:4001", "socket://host:0", "socket://host:65536", "socket://host:40x",
          "socket://host:4001/", "rfc2217://::1:2003", "rfc2217://[::1]2003"}) {
        EXPECT_TRUE(isNetworkPort(text)) << text;
        EXPECT_FALSE(parsePortUrl(text)) << text;
    }
}

// A server on a free loopback port for one connection, on a wire transcript: once the client
// has sent the bytes of a step (and those before), the server sends the step's answer. Then it
// hangs up, or waits until the client does and says a last word; what the client sent must be the steps'
// bytes. Every wait gives up after 10 s.
class FakeServer {
public:
    explicit FakeServer(std::vector<std::pair<std::string, std::string>> steps, bool hangUp = false)
    {
        sockaddr_in a{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t len = sizeof a;
        EXPECT_EQ(bind(listen_, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
        EXPECT_EQ(listen(listen_, 1), 0);
        getsockname(listen_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this, steps = std::move(steps), hangUp] {
            pollfd pfd{listen_, POLLIN, 0};
            const int fd = poll(&pfd, 1, 10000) > 0 ? accept4(listen_, nullptr, nullptr, SOCK_CLOEXEC) : -1;
            const timeval limit{10, 0};
            setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
            std::string received, expected;
            const auto readUntil = [&](std::size_t size) {
                char chunk[4096];
                for (ssize_t n; received.size() < size && (n = recv(fd, chunk, sizeof chunk, 0)) > 0;)
                    received.append(chunk, static_cast<std::size_t>(n));
            };
            for (const auto& [from, answer] : steps) {
                readUntil((expected += from).size());
                [[maybe_unused]] auto n = send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
            }
            readUntil(hangUp ? 0 : SIZE_MAX);
            // Still talking while the client closes: its close drains this.
            if (!hangUp) [[maybe_unused]]
                auto n = send(fd, "late", 4, MSG_NOSIGNAL);
            close(fd);
            EXPECT_EQ(received, expected);
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
    int listen_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    uint16_t port_ = 0;
    std::thread thread_;
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
    // Nobody listens on port 1. A label longer than 63 characters cannot go into a query, so
    // the resolver refuses the name without asking the network.
    const std::pair<std::string, std::string> cases[] = {
        {"socket://127.0.0.1:1", "Connection refused"},
        {"rfc2217://127.0.0.1:1", "Connection refused"},
        {"rfc2217://" + std::string(70, 'x') + ".invalid:2003", ""},
        {"socket://127.0.0.1", "socket://HOST:PORT"},
        {"rfc2217://127.0.0.1:99999", "rfc2217://HOST:PORT"},
    };
    for (const auto& [url, reason] : cases) {
        const auto [number, description] = openError(url);
        EXPECT_EQ(number, err::InvalidPortNumber) << url;
        EXPECT_EQ(description.rfind(err::description(err::InvalidPortNumber) + " (" + url + ": ", 0), 0u)
            << description;
        EXPECT_NE(description.find(reason), std::string::npos) << description;
        EXPECT_FALSE(com.PortOpen());
    }
}

TEST_F(NetPort, RawServerCarriesBytesAsTheyAreAndItsCloseIsAPortError)
{
    FakeServer server({{bytes({'h', 'e', 'l', 'l', 'o', 255}), bytes({'A', 'B', 255})}, {"bye", "XY"}}, true);
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

    // The bytes before the close arrive, though both wait together when the reader looks; the
    // close is then reported with the address.
    com.Output("bye");
    std::this_thread::sleep_for(200ms);
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
    const auto purge = sb(PurgeData, {1});
    FakeServer server({
        {"", serverHello},
        // At open the default line, then a purge.
        {clientHello + line({0, 0, 0x25, 0x80}, 8, 1, 1, 1), line({0, 0, 0x25, 0x80}, 8, 1, 1, 1, 100)},
        {purge, sb(112, {1})},
        {bytes({'a', IAC, IAC, 'b'}), bytes({'x', IAC, IAC, 'y'})},
        // Settings and Handshaking while open each set the whole line.
        {line({0, 0, 0x4b, 0}, 7, 3, 2, 1), line({0, 0, 0x4b, 0}, 7, 3, 2, 1, 100)},
        {line({0, 0, 0x4b, 0}, 7, 3, 2, 3), line({0, 0, 0x4b, 0}, 7, 3, 2, 3, 100)},
        // The second purge finds stale bytes in the server, and fresh ones follow it.
        {purge, "stale" + sb(112, {1}) + "fresh"},
    });
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

TEST_F(NetPort, Rfc2217SettingsTheServerDoesNotConfirmAre8015)
{
    const auto at9600 = clientHello + line({0, 0, 0x25, 0x80}, 8, 1, 1, 1);
    const struct {
        std::string greeting, client, answer;
        int16_t handshaking;
        std::string reason;
    } cases[] = {
        {serverHello, at9600, sb(101, {0, 0, 0x4b, 0}), 0,
         "the server answered SET-BAUDRATE 19200 to SET-BAUDRATE 9600"},
        {serverHello, at9600, sb(101, {0, 0, 0x25, 0x80}), 0, "the server did not confirm SET-DATASIZE 8"},
        {bytes({IAC, DONT, 44}), clientHello, "", 0,
         "the server does not offer the COM port option (RFC 2217)"},
        {serverHello, clientHello, "", 3,
         "the COM port option cannot set XON/XOFF and RTS/CTS handshaking together"},
    };
    for (const auto& c : cases) {
        FakeServer server({{"", c.greeting}, {c.client, c.answer}});
        const auto url = server.url("rfc2217");
        const auto [number, description] = openError(url, c.handshaking);
        EXPECT_EQ(number, err::CommStateNotSet) << c.reason;
        EXPECT_EQ(description, err::description(err::CommStateNotSet) + " (" + url + ": " + c.reason + ")");
    }
}

} // namespace
} // namespace zebreader81::test
