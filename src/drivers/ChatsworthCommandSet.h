// The Chatsworth card reader command set, which the EZData speaks as well: download and
// extended-command frames, the answers to them, the configuration text and the status byte.
// Pure functions over bytes; the port work is in the drivers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace zebreader81::chatsworth {

inline constexpr char DC2 = 18;
inline constexpr char ESC = 27;
inline constexpr char CR = 13;

/// Extended command: DC2 ESC word DC2 "E", sent in one piece.
std::string frame(std::string_view commandWord);
/// Download: DC2 command for each command, then DC2 "E".
std::string download(std::initializer_list<std::string_view> commands);
/// The download of binary conversion for all twelve channels and all columns; also the port probe.
std::string binaryDownload();

/// How the reader answered a command that expects "G" CR.
enum class Reply {
    Accepted, ///< "G" CR
    Refused,  ///< "?" CR, after the echo of the command up to the character it refused
    Other,    ///< anything else: cut short, noise, another answer
};
Reply classify(std::string_view answer);
/// True when `answer` is a refusal: it ends in "?" CR.
bool isRefusal(std::string_view answer);

// Configuration text (the GETCONFIG answer between its "G" and CR). Positions from 1:
//    1-2   line (baud) code
//    4-5   EEPROM flags, two hex digits
//    7-8   timing-mark setting
//   10-12  parity (EVE, ODD, NON); unused by the EZData
//   13-15  timing type or scanner state (INL inline, OFF offset)
//   16-17  threshold code
//   19-21  decay
inline constexpr std::size_t ConfigTextLength = 22;

struct ConfigText {
    std::string lineCode, flags, timing, state, thresholdCode, decay;
};
/// Cuts the fields out of the configuration text; a field beyond a short text comes out short.
ConfigText parseConfigText(std::string_view text);
/// The EEPROM flags of a configuration text; nullopt unless they are two hex digits.
std::optional<uint8_t> flagsOf(const ConfigText& config);
/// SETFLAGS with the flags as two upper-case hex digits.
std::string setFlagsWord(uint8_t flags);

/// EEPROM flags.
namespace flag {
inline constexpr uint8_t ExitControl = 0x01; ///< the card waits for ER or EF after its data
inline constexpr uint8_t FeedControl = 0x02; ///< one enable admits one card
} // namespace flag

/// Bits of the status byte (extended command "S").
namespace status {
inline constexpr uint8_t DocumentAtThroat = 1;
inline constexpr uint8_t Jam = 2;
inline constexpr uint8_t SelfTestFailure = 4;
inline constexpr uint8_t TransportCleared = 16;
inline constexpr uint8_t TransportEnabled = 32;
inline constexpr uint8_t TestMode = 64;
} // namespace status

/// The status byte of an answer "<status> CR", also taken as "G <status> CR"; nullopt for any
/// other answer.
std::optional<uint8_t> statusOf(std::string_view answer);

} // namespace zebreader81::chatsworth
