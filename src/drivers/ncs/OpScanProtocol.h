// OpScan / iNSIGHT wire protocol: command bytes, status replies and the driver's messages.
// Pure functions over bytes; basNCS does the talking.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace zebreader81::OpScanProtocol {

inline constexpr char EOT = 4;
inline constexpr char LF = 10;
inline constexpr char CR = 13;
inline constexpr char SO = 14;
inline constexpr char DC1 = 17;
inline constexpr char DC2 = 18;
inline constexpr char NAK = 21;
inline constexpr char ESC = 27;

/// "s0": at least FullStatusMinimum bytes come back; up to FullStatusLimit are read.
inline constexpr int16_t FullStatusMinimum = 51;
inline constexpr std::size_t FullStatusLimit = 200;
inline constexpr std::size_t StateOffset = 34;
inline constexpr std::size_t ModeOffset = 48;
/// "s1": at least ShortStatusMinimum bytes; up to ShortStatusLimit are read.
inline constexpr int16_t ShortStatusMinimum = 4;
inline constexpr std::size_t ShortStatusLimit = 5;

/// A status reply as the driver collects it: unread positions stay 0.
using Reply = std::array<uint8_t, 201>;

/// The mode the driver puts the scanner in before reading, and the step between modes.
inline constexpr int32_t ReadingMode = 1;
inline constexpr int32_t TransitionMode = 5;

inline std::string fullStatusQuery() { return "s0"; }
inline std::string shortStatusQuery() { return "s1"; }
inline std::string readyCommand() { return "r"; }
inline std::string nextSheetCommand() { return {DC1}; }
inline std::string feederOffCommand() { return {SO}; }
inline std::string rejectCommand() { return {ESC, DC2}; }
inline std::string ejectCommand() { return {DC2}; }

/// Letter of a scan mode 1..6; empty for any other value.
std::string modeLetter(int32_t mode);
/// Scan mode of a letter in either case; nothing for a letter outside the table.
std::optional<int32_t> modeOfLetter(uint8_t letter);
/// "e", the mode's letter (empty for a mode outside 1..6), EOT.
std::string setModeCommand(int32_t mode);
/// "1", the distance as at least two digits, EOT.
std::string imprinterPositionCommand(int32_t distance);
/// "2", the text, one blank, EOT.
std::string imprinterTextCommand(const std::string& text);

/// What an "s0" reply says.
struct FullStatus {
    /// The state letter, upper-cased (one character, whatever byte was there).
    std::string state;
    /// Nothing when the mode letter is not in the table.
    std::optional<int32_t> mode;
};
FullStatus parseFullStatus(const Reply& reply);

/// Verdict on the status bytes of an "s1" reply, first match first.
enum class StatusFault {
    None,
    SkewedPage,
    ThicknessError,
    PaperJam,
    ReadHeadError,
    /// Paper-path bits the driver fails on without a message.
    Unreported,
};
StatusFault classifyStatus(const Reply& reply);

struct DeviceMessage {
    const char* title;
    const char* text;
};
/// Title and text of a reported fault; empty texts for None and Unreported.
DeviceMessage faultMessage(StatusFault fault);

inline constexpr const char* NoResponseTitle = "No Response";
inline constexpr const char* NoResponseStatus =
    "There was no response from the scanner while checking status.";
inline constexpr const char* NoResponseScanning =
    "There was no response from the scanner while scanning a page.";
inline constexpr const char* NoResponseReading = "There was no response from the scanner while reading data.";
inline constexpr const char* InvalidScanModeTitle = "Invalid Scan Mode";
inline constexpr const char* InvalidScanModeText = "An invalid scan mode was specified.";
inline constexpr const char* InvalidBytesTitle = "Invalid Number of Bytes";

/// The message for a row letter that followed a row of `count` values (side 1 or 2).
std::string invalidRowMessage(int side, int32_t count, int32_t lineNumber);

} // namespace zebreader81::OpScanProtocol
