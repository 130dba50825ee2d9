#include "channel/SerialBackend.h"

#include "core/basError.h"

#include <cctype>
#include <charconv>
#include <vector>

namespace zebreader81 {

namespace {

std::vector<std::string> splitCommas(const std::string& text)
{
    std::vector<std::string> parts;
    std::string current;
    for (char c : text) {
        if (c == ',') {
            parts.push_back(current);
            current.clear();
        } else if (c != ' ') {
            current += c;
        }
    }
    parts.push_back(current);
    return parts;
}

bool parseInt(const std::string& s, int32_t& out)
{
    if (s.empty())
        return false;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return ec == std::errc() && p == s.data() + s.size();
}

} // namespace

LineSettings LineSettings::parse(const std::string& text)
{
    const auto parts = splitCommas(text);
    LineSettings s;
    int32_t data = 0;
    if (parts.size() != 4 || !parseInt(parts[0], s.baud) || s.baud <= 0 || parts[1].size() != 1 ||
        !parseInt(parts[2], data))
        err::raise(err::InvalidPropertyValue);
    s.parity = static_cast<char>(std::toupper(static_cast<unsigned char>(parts[1][0])));
    if (std::string("NEOMS").find(s.parity) == std::string::npos)
        err::raise(err::InvalidPropertyValue);
    s.dataBits = data;
    if (s.dataBits < 4 || s.dataBits > 8)
        err::raise(err::InvalidPropertyValue);
    if (parts[3] == "1")
        s.stopBits = 1.0f;
    else if (parts[3] == "1.5")
        s.stopBits = 1.5f;
    else if (parts[3] == "2")
        s.stopBits = 2.0f;
    else
        err::raise(err::InvalidPropertyValue);
    return s;
}

} // namespace zebreader81
