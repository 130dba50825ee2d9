// Wire protocol of the VMR138: commands, status bits, the threshold reply and the sheet
// stream. Pure functions over bytes; the port work lives in basPeripheralDynamics.
#pragma once

#include "zebreader81/SafeArray.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zebreader81::pdi {

// Single-character commands, sent without a terminator.
inline constexpr const char* CmdReset = "0";
inline constexpr const char* CmdStatus = "Q";
inline constexpr const char* CmdClearD = "D";
inline constexpr const char* CmdClearG = "G";
inline constexpr const char* CmdClearE = "E";
inline constexpr const char* CmdRead = "8";
inline constexpr const char* CmdEndRead = "9";
inline constexpr const char* CmdReject = "3";
inline constexpr const char* CmdEject = "4";
inline constexpr const char* CmdThresholdDown = "+";
inline constexpr const char* CmdThresholdUp = "-";

// Status byte 1.
inline constexpr int BackSensor = 1;
inline constexpr int FrontSensor = 2;
inline constexpr int Status1AnswerG = 4;
inline constexpr int Status1AnswerD = 16;
inline constexpr int ReadUnderWay = 32;
inline constexpr int PaperJam = 64;
// Status byte 2.
inline constexpr int Status2AnswerE = 8;

/// Characters in a status reply (the first carries nothing) and in a threshold answer.
inline constexpr int StatusReplyLength = 3;
inline constexpr int ThresholdReplyLength = 2;

inline constexpr char LF = 10;
inline constexpr char CR = 13;
/// A sheet byte that carries no marks.
inline constexpr int EmptyHalfRow = 64;

inline constexpr int MaxRows = 500;
inline constexpr int MaxCols = 14;

/// The device message for status byte 1, or nothing when it reports no fault. The front
/// sensor wins over the back sensor, and both over a jam.
std::optional<std::string> statusFault(int status1);

/// Rows announced at the LF: (waiting − 1) / 2, halves rounded to even.
int32_t rowCount(int32_t waiting);

/// Value of a threshold reply read as hexadecimal digits ("0"-"9", "A"-"F"); nothing when
/// a character is outside them, the reply is empty or its value passes 32 bits.
std::optional<int32_t> parseThreshold(std::string_view reply);

/// The commands that move the scanner from `current` to `wanted`: "+" steps down, "-" up.
std::string thresholdSteps(int32_t current, int32_t wanted);

/// Decodes the data bytes of one sheet into the 500 × 14 mark array, two bytes per row,
/// filling from the announced last row upward.
class SheetDecoder {
public:
    explicit SheetDecoder(int16_t markValue);

    /// Ends the header: `rows` is the row the first pair goes to.
    void start(int32_t rows);
    bool started() const { return started_; }
    /// Takes one data byte. A mark outside the array raises error 9.
    void add(unsigned char c);
    const SafeArray<int16_t>& marks() const { return marks_; }

private:
    int16_t markValue_;
    bool started_ = false;
    int32_t row_ = 0;
    bool secondByte_ = false;
    SafeArray<int16_t> marks_;
};

} // namespace zebreader81::pdi
