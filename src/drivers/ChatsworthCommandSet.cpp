#include "drivers/ChatsworthCommandSet.h"

#include <cstdio>

namespace zebreader81::chatsworth {

namespace {

// Characters `from` to `to` (from 1), as far as the text reaches.
std::string field(std::string_view text, std::size_t from, std::size_t to)
{
    if (text.size() < from)
        return {};
    return std::string(text.substr(from - 1, to - from + 1));
}

std::optional<uint8_t> hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<uint8_t>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<uint8_t>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f')
        return static_cast<uint8_t>(c - 'a' + 10);
    return std::nullopt;
}

} // namespace

std::string frame(std::string_view commandWord)
{
    std::string out{DC2, ESC};
    out += commandWord;
    out += DC2;
    out += 'E';
    return out;
}

std::string download(std::initializer_list<std::string_view> commands)
{
    std::string out;
    for (auto command : commands) {
        out += DC2;
        out += command;
    }
    out += DC2;
    out += 'E';
    return out;
}

std::string binaryDownload() { return download({"R7777", "I00"}); }

Reply classify(std::string_view answer)
{
    if (answer == std::string_view("G\r"))
        return Reply::Accepted;
    return isRefusal(answer) ? Reply::Refused : Reply::Other;
}

bool isRefusal(std::string_view answer) { return answer.ends_with(std::string_view("?\r")); }

ConfigText parseConfigText(std::string_view text)
{
    return {field(text, 1, 2),   field(text, 4, 5),   field(text, 7, 8),
            field(text, 13, 15), field(text, 16, 17), field(text, 19, 21)};
}

std::optional<uint8_t> flagsOf(const ConfigText& config)
{
    if (config.flags.size() != 2)
        return std::nullopt;
    const auto high = hexDigit(config.flags[0]);
    const auto low = hexDigit(config.flags[1]);
    if (!high || !low)
        return std::nullopt;
    return static_cast<uint8_t>(*high * 16 + *low);
}

std::string setFlagsWord(uint8_t flags)
{
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", flags);
    return std::string("SETFLAGS") + digits;
}

std::optional<uint8_t> statusOf(std::string_view answer)
{
    if (answer.size() == 2 && answer[1] == CR)
        return static_cast<uint8_t>(answer[0]);
    if (answer.size() == 3 && answer[0] == 'G' && answer[2] == CR)
        return static_cast<uint8_t>(answer[1]);
    return std::nullopt;
}

} // namespace zebreader81::chatsworth
