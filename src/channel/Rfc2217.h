// The telnet COM port option (RFC 2217) on bytes: data escaping, the commands that set a
// server's line, and a decoder for what the server sends. No I/O here.
#pragma once

#include "channel/SerialBackend.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::rfc2217 {

inline constexpr uint8_t IAC = 255, DONT = 254, DO = 253, WONT = 252, WILL = 251, SB = 250, SE = 240;
inline constexpr uint8_t BINARY = 0, SGA = 3, COM_PORT_OPTION = 44;

/// Client command codes; the server answers with the code plus 100.
enum Command : uint8_t {
    SetBaudRate = 1,
    SetDataSize = 2,
    SetParity = 3,
    SetStopSize = 4,
    SetControl = 5,
    NotifyLineState = 6,
    NotifyModemState = 7,
    PurgeData = 12,
};
/// PURGE-DATA value: the server's buffer of what the device sent.
inline constexpr uint8_t PurgeReceive = 1;

/// Data as it goes to the server: every IAC doubled.
std::string escape(std::string_view data);
/// How many bytes of `data` are wholly inside the first `sent` bytes of escape(data).
std::size_t unescapedCount(std::string_view data, std::size_t sent);
/// IAC SB COM-PORT-OPTION `command` `value` IAC SE, IACs in the value doubled.
std::string command(uint8_t command, std::string_view value);
/// What a client sends on connecting: it will do the COM port option, and both sides binary
/// with suppressed go-ahead.
std::string greeting();

/// One command of a line set-up and the value it carries.
struct Setting {
    uint8_t command;
    std::string value;
};
/// The commands that put `settings` and `handshaking` (0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both)
/// on the server's line, in the order to send them; nullopt with `why` set when the option
/// cannot say it (data bits outside 5 to 8, both kinds of handshaking at once).
std::optional<std::vector<Setting>> lineCommands(const LineSettings& settings, int handshaking,
                                                 std::string& why);
/// The text of a command and value for a report ("SET-BAUDRATE 19200").
std::string describe(uint8_t command, std::string_view value);

/// A COM port option message from the server, with where it came in the data stream.
struct Reply {
    uint8_t command;        ///< the client code it answers (the server's code minus 100)
    std::string value;      ///< IAC doubling removed
    std::size_t dataOffset; ///< size of the data output when it arrived
};

/// Splits what the server sends into data, COM port option replies and the negotiation
/// answers owed to the server. Keeps its state between chunks, so a sequence may be cut
/// anywhere. Assumes greeting() was sent.
class Decoder {
public:
    Decoder();
    /// Appends data to `data`, replies to `replies` and answers to send back to `answer`.
    void feed(std::string_view bytes, std::string& data, std::vector<Reply>& replies, std::string& answer);
    /// The server agreed to the COM port option (DO COM-PORT-OPTION).
    bool comPortAgreed() const { return ours_[COM_PORT_OPTION]; }
    /// The server refused it (DONT COM-PORT-OPTION).
    bool comPortRefused() const { return refused_; }

private:
    enum class State { Data, Iac, Verb, SbOption, SbData, SbIac, SbSkip, SbSkipIac };
    void negotiate(uint8_t verb, uint8_t option, std::string& answer);
    void endSubnegotiation(const std::string& data, std::vector<Reply>& replies);

    State state_ = State::Data;
    uint8_t verb_ = 0;
    std::string sb_;
    // Options in force on our side (WILL) and theirs (DO), and the ones we asked for.
    std::bitset<256> ours_, theirs_, askedOurs_, askedTheirs_;
    bool refused_ = false;
};

} // namespace zebreader81::rfc2217
