// EZData wire protocol: the command words and the checks of its answers, over the card
// reader command set it shares with the Chatsworth family. Pure functions over bytes; the
// port work is in basNCSEZData.
#pragma once

#include "drivers/ChatsworthCommandSet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zebreader81::ezdata {

using chatsworth::CR;
using chatsworth::DC2;
using chatsworth::ESC;

/// Command words.
namespace word {
inline constexpr std::string_view GetConfig = "GETCONFIG";
inline constexpr std::string_view SetFlags = "SETFLAGS03";
inline constexpr std::string_view SetTiming = "SETTMCH0";
/// Followed by the threshold in decimal.
inline constexpr std::string_view SetThreshold = "SETTHRESH";
inline constexpr std::string_view SetDecay = "SETDECAY3";
inline constexpr std::string_view Status = "S";
inline constexpr std::string_view Enable = "E";
inline constexpr std::string_view Reject = "ER";
inline constexpr std::string_view Accept = "EF";
inline constexpr std::string_view Disable = "D";
} // namespace word

using chatsworth::frame;

// The EZData wants line code "22", flags "03", timing "80", state "INL", a threshold code
// "60", "62" ... "78" for threshold 0 to 9 and decay "1.5".
using chatsworth::ConfigText;
using chatsworth::ConfigTextLength;
using chatsworth::parseConfigText;
/// "G", the configuration text, CR.
inline constexpr std::size_t ConfigAnswerLength = ConfigTextLength + 2;

/// Threshold 0 to 9 that a threshold code stands for; nullopt for any other code.
std::optional<int16_t> thresholdOfCode(std::string_view code);

/// What is wrong with a "G" ... CR answer, in the order it is checked.
enum class AnswerFault {
    None,
    Refused,     ///< first byte "?"
    NotAccepted, ///< no answer, or another first byte
    BrokenOff,   ///< CR missing, too early or too late
};
/// Checks an answer that should be "G", `expectedLength` - 2 characters, CR.
AnswerFault checkAnswer(std::string_view answer, std::size_t expectedLength);

/// "EZData Scanner - Unexpected data returned from scanner (<step>)."
std::string unexpectedData(std::string_view step);
/// The message for a fault of a step's answer: "(<step>?)", "(<step>1)" or "(<step>2)".
std::string answerMessage(std::string_view step, AnswerFault fault);

/// Answer to a configuration command: exactly "G" CR.
enum class SetValuesFault { None, ByteCount, Refused, ReturnValue, NoCR };
SetValuesFault checkSetValuesAnswer(std::string_view answer);
/// The message for a bad answer to `commandWord`.
std::string setValuesMessage(SetValuesFault fault, std::string_view commandWord);

/// Status answer: exactly "G", the status byte, CR.
enum class StatusFault { None, Incomplete, Refused, NotAccepted };
struct StatusAnswer {
    StatusFault fault = StatusFault::Incomplete;
    uint8_t status = 0;
};
StatusAnswer checkStatusAnswer(std::string_view answer);
inline constexpr std::size_t StatusAnswerLength = 3;

/// Status bits.
namespace status {
inline constexpr uint8_t SheetInTransport = 1;
inline constexpr uint8_t PowerOnFailure = 4;
inline constexpr uint8_t PaperInTransport = 16;
} // namespace status

} // namespace zebreader81::ezdata
