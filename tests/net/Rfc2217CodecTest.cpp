// The RFC 2217 codec on bytes, and network port addresses.
#include "channel/NetworkPort.h"
#include "channel/Rfc2217.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

using namespace rfc2217;

std::string bytes(std::initializer_list<int> values)
{
    std::string out;
    for (const int v : values)
        out += static_cast<char>(v);
    return out;
}

std::string sb(int code, std::initializer_list<int> value)
{
    return bytes({IAC, SB, COM_PORT_OPTION, code}) + bytes(value) + bytes({IAC, SE});
}

TEST(Rfc2217Codec, DataEscapingDoublesEveryIacAndCountsWhatWentOut)
{
    const std::string data = bytes({'a', 255, 'b', 255, 255});
    EXPECT_EQ(escape(data), bytes({'a', 255, 255, 'b', 255, 255, 255, 255}));
    EXPECT_EQ(escape(""), "");
    // A write cut short in the middle of a doubled IAC has not sent that byte.
    EXPECT_EQ(unescapedCount(data, 0), 0u);
    EXPECT_EQ(unescapedCount(data, 2), 1u);
    EXPECT_EQ(unescapedCount(data, 3), 2u);
    EXPECT_EQ(unescapedCount(data, 7), 4u);
    EXPECT_EQ(unescapedCount(data, 8), 5u);
}

TEST(Rfc2217Codec, SettingsBecomeTheFiveCommandsInOrder)
{
    struct Case {
        const char* settings;
        int handshaking;
        std::string expected;
    };
    const Case cases[] = {
        {"9600,N,8,1", 0, sb(1, {0, 0, 0x25, 0x80}) + sb(2, {8}) + sb(3, {1}) + sb(4, {1}) + sb(5, {1})},
        {"19200,E,7,2", 1, sb(1, {0, 0, 0x4b, 0}) + sb(2, {7}) + sb(3, {3}) + sb(4, {2}) + sb(5, {2})},
        {"38400,O,5,1.5", 2, sb(1, {0, 0, 0x96, 0}) + sb(2, {5}) + sb(3, {2}) + sb(4, {3}) + sb(5, {3})},
        {"1200,M,6,1", 0, sb(1, {0, 0, 4, 0xb0}) + sb(2, {6}) + sb(3, {4}) + sb(4, {1}) + sb(5, {1})},
        // 65,535 baud carries two IAC bytes in its value: doubled inside the subnegotiation.
        {"65535,S,8,1", 0,
         bytes({IAC, SB, 44, 1, 0, 0, 255, 255, 255, 255, IAC, SE}) + sb(2, {8}) + sb(3, {5}) + sb(4, {1}) +
             sb(5, {1})},
    };
    for (const auto& c : cases) {
        std::string why;
        const auto commands = lineCommands(LineSettings::parse(c.settings), c.handshaking, why);
        ASSERT_TRUE(commands) << c.settings;
        std::string wire;
        for (const auto& s : *commands)
            wire += command(s.command, s.value);
        EXPECT_EQ(wire, c.expected) << c.settings;
    }
    std::string why;
    EXPECT_FALSE(lineCommands(LineSettings::parse("9600,N,4,1"), 0, why));
    EXPECT_NE(why.find("5 to 8 data bits"), std::string::npos);
    EXPECT_FALSE(lineCommands(LineSettings::parse("9600,N,8,1"), 3, why));
    EXPECT_NE(why.find("together"), std::string::npos);
    EXPECT_EQ(describe(SetBaudRate, bytes({0, 0, 0x4b, 0})), "SET-BAUDRATE 19200");
    EXPECT_EQ(describe(SetControl, bytes({3})), "SET-CONTROL 3");
}

// What ser2net 4 sends on a new connection, and its answers to our greeting and commands.
const std::string serverGreeting =
    bytes({IAC, WILL,   SGA, IAC,  DO,     SGA, IAC, WILL,           1, IAC, DONT, 1, IAC,
           DO,  BINARY, IAC, WILL, BINARY, IAC, DO,  COM_PORT_OPTION});

TEST(Rfc2217Codec, DecoderAgreesToTheServersGreetingAndRefusesEcho)
{
    Decoder d;
    std::string data, answer;
    std::vector<Reply> replies;
    EXPECT_FALSE(d.comPortAgreed());
    d.feed(serverGreeting, data, replies, answer);
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
    // Data with a doubled IAC, a confirmation of 19200 baud (no IAC), a purge answer, a line
    // state notice, a NOP, a signature reply too long to keep, and data after each.
    const std::string stream = bytes({'A', IAC, IAC, 'B'}) + sb(101, {0, 0, 0x4b, 0}) + "CD" + sb(112, {1}) +
                               bytes({IAC, 241}) + "E" + sb(106, {0x60}) + bytes({IAC, SB, 44, 100}) +
                               std::string(300, 'x') + bytes({IAC, SE}) + bytes({IAC, IAC}) + "F";
    const std::string expectedData = bytes({'A', 255, 'B', 'C', 'D', 'E', 255, 'F'});
    for (std::size_t cut1 = 0; cut1 <= stream.size(); cut1 += 7)
        for (const std::size_t cut2 :
             {cut1, std::min(stream.size(), cut1 + 1), std::min(stream.size(), cut1 + 3)}) {
            Decoder d;
            std::string data, answer;
            std::vector<Reply> replies;
            d.feed(std::string_view(stream).substr(0, cut1), data, replies, answer);
            d.feed(std::string_view(stream).substr(cut1, cut2 - cut1), data, replies, answer);
            d.feed(std::string_view(stream).substr(cut2), data, replies, answer);
            ASSERT_EQ(data, expectedData) << "cut at " << cut1 << " and " << cut2;
            ASSERT_EQ(replies.size(), 3u) << "cut at " << cut1;
            EXPECT_EQ(replies[0].command, SetBaudRate);
            EXPECT_EQ(replies[0].value, bytes({0, 0, 0x4b, 0}));
            EXPECT_EQ(replies[0].dataOffset, 3u);
            EXPECT_EQ(replies[1].command, PurgeData);
            EXPECT_EQ(replies[1].dataOffset, 5u);
            EXPECT_EQ(replies[2].command, NotifyLineState);
            EXPECT_EQ(answer, "");
        }
    // An IAC inside a reply's value comes doubled.
    Decoder d;
    std::string data, answer;
    std::vector<Reply> replies;
    d.feed(bytes({IAC, SB, 44, 101, 0, 0, 255, 255, 255, 255, IAC, SE}), data, replies, answer);
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].value, bytes({0, 0, 255, 255}));
}

TEST(NetworkPortAddress, SchemesHostsAndPorts)
{
    struct Case {
        const char* text;
        bool network;
        bool valid;
        PortUrl::Kind kind;
        const char* host;
        int port;
    };
    using K = PortUrl::Kind;
    const Case cases[] = {
        {"socket://127.0.0.1:4001", true, true, K::Raw, "127.0.0.1", 4001},
        {"rfc2217://scanbox:2003", true, true, K::Rfc2217, "scanbox", 2003},
        {"RFC2217://[::1]:65535", true, true, K::Rfc2217, "::1", 65535},
        {"socket://desk-3.example.org:1", true, true, K::Raw, "desk-3.example.org", 1},
        {"/dev/ttyUSB0", false, false, K::Raw, "", 0},
        {"tcp://host:1", false, false, K::Raw, "", 0},
        {"socket://host", true, false, K::Raw, "", 0},
        {"socket://:4001", true, false, K::Raw, "", 0},
        {"socket://host:0", true, false, K::Raw, "", 0},
        {"socket://host:65536", true, false, K::Raw, "", 0},
        {"socket://host:40x", true, false, K::Raw, "", 0},
        {"socket://host:4001/", true, false, K::Raw, "", 0},
        {"rfc2217://::1:2003", true, false, K::Raw, "", 0},
        {"rfc2217://[::1]2003", true, false, K::Raw, "", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isNetworkPort(c.text), c.network) << c.text;
        const auto url = parsePortUrl(c.text);
        ASSERT_EQ(url.has_value(), c.valid) << c.text;
        if (url) {
            EXPECT_EQ(url->kind, c.kind) << c.text;
            EXPECT_EQ(url->host, c.host) << c.text;
            EXPECT_EQ(url->port, c.port) << c.text;
        }
    }
}

} // namespace
} // namespace zebreader81::test
