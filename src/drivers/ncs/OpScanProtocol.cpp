#include "drivers/ncs/OpScanProtocol.h"

#include <cstdlib>

namespace zebreader81::OpScanProtocol {

namespace {

constexpr std::array<char, 6> modeLetters{'i', 'e', 't', 'd', 'w', 's'};

char upper(uint8_t c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c); }
char lower(uint8_t c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); }

} // namespace

std::string modeLetter(int32_t mode)
{
    if (mode < 1 || mode > static_cast<int32_t>(modeLetters.size()))
        return {};
    return {modeLetters[static_cast<std::size_t>(mode - 1)]};
}

std::optional<int32_t> modeOfLetter(uint8_t letter)
{
    const char c = lower(letter);
    for (std::size_t i = 0; i < modeLetters.size(); ++i)
        if (modeLetters[i] == c)
            return static_cast<int32_t>(i + 1);
    return std::nullopt;
}

std::string setModeCommand(int32_t mode) { return "e" + modeLetter(mode) + EOT; }

std::string imprinterPositionCommand(int32_t distance)
{
    // Two digits at least, the sign in front: 7 -> "07", -7 -> "-07", 123 -> "123".
    std::string digits = std::to_string(std::abs(static_cast<int64_t>(distance)));
    if (digits.size() < 2)
        digits.insert(0, 2 - digits.size(), '0');
    return std::string("1") + (distance < 0 ? "-" : "") + digits + EOT;
}

std::string imprinterTextCommand(const std::string& text) { return "2" + text + " " + EOT; }

FullStatus parseFullStatus(const Reply& reply)
{
    return {std::string(1, upper(reply[StateOffset])), modeOfLetter(reply[ModeOffset])};
}

StatusFault classifyStatus(const Reply& reply)
{
    const uint8_t a = reply[1];
    const uint8_t b = reply[2];
    if ((((a & 3) | b) & 15) == 0)
        return StatusFault::None;
    if (a & 2)
        return StatusFault::SkewedPage;
    if (a & 1)
        return StatusFault::ThicknessError;
    if (b & 8)
        return StatusFault::PaperJam;
    if (b & 4)
        return StatusFault::ReadHeadError;
    return StatusFault::Unreported;
}

DeviceMessage faultMessage(StatusFault fault)
{
    switch (fault) {
    case StatusFault::SkewedPage:
        return {"Skewed Page",
                "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."};
    case StatusFault::ThicknessError:
        return {"Thickness Error",
                "The scanner reports a page thickness error. Please check that the scanner "
                "did not double feed and then rescan this page."};
    case StatusFault::PaperJam:
        return {
            "Paper Jam",
            "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form."};
    case StatusFault::ReadHeadError:
        return {"Read Head Error",
                "The scanner reports a read head error.  Check with the scanner's manufacturer for support."};
    case StatusFault::None:
    case StatusFault::Unreported: break;
    }
    return {"", ""};
}

std::string invalidRowMessage(int side, int32_t count, int32_t lineNumber)
{
    const std::string head = side == 1 ? "The scanner reported an invalid number of bytes on side 1"
                                       : "The scanner reported an invalid number of bytes  on side 2";
    return head + "\r\n\r\n" + "Invalid number of bytes: " + std::to_string(count) + "\r\n" +
           "Line number: " + std::to_string(lineNumber);
}

} // namespace zebreader81::OpScanProtocol
