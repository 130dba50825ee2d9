#include "registry/RegFormat.h"

#include "registry/TextCodec.h"

#include <cctype>
#include <cstdio>

namespace zebreader81::registry {

namespace {

constexpr std::string_view header5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view header4 = "REGEDIT4";

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view s)
{
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

bool startsWithNoCase(std::string_view s, std::string_view prefix)
{
    if (s.size() < prefix.size())
        return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(s[i])) !=
            std::tolower(static_cast<unsigned char>(prefix[i])))
            return false;
    return true;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string decodeText(std::string_view bytes)
{
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE)
        return utf16leToUtf8(reinterpret_cast<const uint8_t*>(bytes.data()) + 2, bytes.size() - 2);
    if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    return std::string(bytes);
}

// Parses a quoted text at s[pos] == '"'; leaves pos after the closing quote.
std::optional<std::string> parseQuoted(std::string_view s, size_t& pos)
{
    std::string out;
    for (++pos; pos < s.size(); ++pos) {
        const char c = s[pos];
        if (c == '"') {
            ++pos;
            return out;
        }
        if (c == '\\' && pos + 1 < s.size()) {
            const char e = s[++pos];
            out += e == 'n' ? '\n' : e == 'r' ? '\r' : e == '0' ? '\0' : e;
        } else {
            out += c;
        }
    }
    return std::nullopt;
}

struct LineParser {
    bool unicode = true;
    std::string message;

    bool fail(std::string m)
    {
        message = std::move(m);
        return false;
    }

    bool parseHexList(std::string_view s, std::vector<uint8_t>& out)
    {
        s = trim(s);
        if (s.empty())
            return true;
        size_t pos = 0;
        while (true) {
            while (pos < s.size() && isBlank(s[pos]))
                ++pos;
            int v = 0, digits = 0;
            while (pos < s.size() && hexDigit(s[pos]) >= 0 && digits < 3)
                v = v * 16 + hexDigit(s[pos++]), ++digits;
            if (digits == 0 || digits > 2)
                return fail("a hexadecimal byte list must be two-digit bytes separated by commas");
            out.push_back(static_cast<uint8_t>(v));
            while (pos < s.size() && isBlank(s[pos]))
                ++pos;
            if (pos == s.size())
                return true;
            if (s[pos] != ',')
                return fail("a hexadecimal byte list must be two-digit bytes separated by commas");
            ++pos;
            if (trim(s.substr(pos)).empty())
                return true; // a trailing comma, as before a continuation
        }
    }

    Value hexValue(uint32_t type, std::vector<uint8_t> bytes) const
    {
        Value v{type, {}};
        if (!isTextType(type)) {
            v.data = std::move(bytes);
            return v;
        }
        std::string text =
            unicode ? utf16leToUtf8(bytes.data(), bytes.size()) : std::string(bytes.begin(), bytes.end());
        if (type != REG_MULTI_SZ && !text.empty() && text.back() == '\0')
            text.pop_back();
        v.data.assign(text.begin(), text.end());
        return v;
    }

    bool parseData(std::string_view s, RegEntry& entry)
    {
        s = trim(s);
        if (s == "-") {
            entry.remove = true;
            return true;
        }
        if (!s.empty() && s[0] == '"') {
            size_t pos = 0;
            auto text = parseQuoted(s, pos);
            if (!text)
                return fail("the text has no closing quote");
            if (!trim(s.substr(pos)).empty())
                return fail("unexpected characters after the closing quote");
            entry.value = Value::text(*text);
            return true;
        }
        if (startsWithNoCase(s, "dword:")) {
            const auto digits = trim(s.substr(6));
            if (digits.empty() || digits.size() > 8)
                return fail("a dword needs one to eight hexadecimal digits");
            uint32_t v = 0;
            for (char c : digits) {
                if (hexDigit(c) < 0)
                    return fail("a dword needs one to eight hexadecimal digits");
                v = v * 16 + static_cast<uint32_t>(hexDigit(c));
            }
            entry.value = Value::dword(v);
            return true;
        }
        if (startsWithNoCase(s, "hex")) {
            size_t pos = 3;
            uint32_t type = REG_BINARY;
            if (pos < s.size() && s[pos] == '(') {
                const auto close = s.find(')', pos);
                if (close == std::string_view::npos || close == pos + 1 || close - pos > 9)
                    return fail("a value type must be hex(<type>)");
                type = 0;
                for (size_t i = pos + 1; i < close; ++i) {
                    if (hexDigit(s[i]) < 0)
                        return fail("a value type must be hex(<type>)");
                    type = type * 16 + static_cast<uint32_t>(hexDigit(s[i]));
                }
                pos = close + 1;
            }
            if (pos >= s.size() || s[pos] != ':')
                return fail("a hexadecimal value must be hex:<bytes> or hex(<type>):<bytes>");
            std::vector<uint8_t> bytes;
            if (!parseHexList(s.substr(pos + 1), bytes))
                return false;
            entry.value = hexValue(type, std::move(bytes));
            return true;
        }
        return fail("the value data is not a text, dword or hex list");
    }

    bool parseValueLine(std::string_view line, RegEntry& entry)
    {
        size_t pos = 0;
        if (line[0] == '@') {
            pos = 1;
        } else {
            auto name = parseQuoted(line, pos);
            if (!name)
                return fail("the value name has no closing quote");
            entry.name = std::move(*name);
        }
        while (pos < line.size() && isBlank(line[pos]))
            ++pos;
        if (pos >= line.size() || line[pos] != '=')
            return fail("a value line must be \"name\"=data");
        return parseData(line.substr(pos + 1), entry);
    }
};

// A hex list ends its line with a backslash when it goes on.
bool continues(std::string_view line)
{
    line = trim(line);
    return !line.empty() && line.back() == '\\';
}

} // namespace

std::optional<RegParseError> parseRegFile(std::string_view bytes, RegDocument& out)
{
    const std::string text = decodeText(bytes);
    std::vector<std::string_view> lines;
    for (size_t start = 0; start <= text.size();) {
        auto end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string_view line(text.data() + start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
        start = end + 1;
    }

    RegDocument doc;
    LineParser parser;
    bool sawHeader = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        const int lineNo = static_cast<int>(i + 1);
        std::string_view line = trim(lines[i]);
        if (line.empty())
            continue;
        if (!sawHeader) {
            if (line == header5) {
                parser.unicode = true;
            } else if (line == header4) {
                parser.unicode = false;
            } else {
                return RegParseError{lineNo, "the first line must be \"" + std::string(header5) + "\""};
            }
            sawHeader = true;
            continue;
        }
        if (line[0] == ';')
            continue;
        if (line[0] == '[') {
            const auto close = line.rfind(']');
            if (close == std::string_view::npos || !trim(line.substr(close + 1)).empty())
                return RegParseError{lineNo, "a key line must be [key]"};
            RegSection section;
            std::string_view key = line.substr(1, close - 1);
            if (!key.empty() && key[0] == '-') {
                section.remove = true;
                key.remove_prefix(1);
            }
            if (key.empty())
                return RegParseError{lineNo, "the key name is empty"};
            section.key = std::string(key);
            section.line = lineNo;
            doc.sections.push_back(std::move(section));
            continue;
        }
        if (line[0] != '"' && line[0] != '@')
            return RegParseError{lineNo, "the line is neither a key, a value nor a comment"};
        if (doc.sections.empty())
            return RegParseError{lineNo, "a value comes before any [key]"};
        std::string joined(line);
        while (continues(joined) && i + 1 < lines.size()) {
            joined = std::string(trim(joined));
            joined.pop_back();
            joined += trim(lines[++i]);
        }
        RegEntry entry;
        if (!parser.parseValueLine(joined, entry))
            return RegParseError{lineNo, parser.message};
        if (doc.sections.back().remove)
            return RegParseError{lineNo, "a deleted key cannot hold values"};
        doc.sections.back().entries.push_back(std::move(entry));
    }
    if (!sawHeader)
        return RegParseError{1, "the first line must be \"" + std::string(header5) + "\""};
    out = std::move(doc);
    return std::nullopt;
}

namespace {

std::string quote(std::string_view s)
{
    std::string out = "\"";
    for (char c : s) {
        if (c == '\\' || c == '"')
            out += '\\';
        out += c;
    }
    return out + '"';
}

// The editor writes a text as "text" when it can be read back so.
bool plainText(std::string_view s)
{
    return isValidUtf8(s) && s.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos;
}

std::string hexList(std::string line, const std::vector<uint8_t>& bytes, std::string_view eol)
{
    // Lines are kept under 80 columns, continued with ",\" and two blanks, as the editor does.
    std::string out;
    char buf[4];
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::snprintf(buf, sizeof buf, "%02x", bytes[i]);
        if (i > 0) {
            line += ',';
            if (line.size() + 3 > 79) {
                out += line + "\\" + std::string(eol);
                line = "  ";
            }
        }
        line += buf;
    }
    return out + line;
}

std::string formatEntry(const RegEntry& e, std::string_view eol)
{
    std::string line = e.name.empty() ? "@=" : quote(e.name) + "=";
    if (e.remove)
        return line + "-";
    const auto& v = e.value;
    const std::string_view text(reinterpret_cast<const char*>(v.data.data()), v.data.size());
    if (v.type == REG_SZ && plainText(text))
        return line + quote(text);
    if (v.type == REG_DWORD && v.data.size() == 4) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "dword:%08x",
                      v.data[0] | (v.data[1] << 8) | (v.data[2] << 16) |
                          (static_cast<uint32_t>(v.data[3]) << 24));
        return line + buf;
    }
    std::vector<uint8_t> bytes = v.data;
    if (isTextType(v.type)) {
        bytes = utf8ToUtf16le(text);
        if (v.type != REG_MULTI_SZ)
            bytes.insert(bytes.end(), {0, 0});
    }
    if (v.type == REG_BINARY) {
        line += "hex:";
    } else {
        char buf[24];
        std::snprintf(buf, sizeof buf, "hex(%x):", v.type);
        line += buf;
    }
    return hexList(std::move(line), bytes, eol);
}

} // namespace

std::string formatRegFile(const RegDocument& doc, RegEncoding encoding)
{
    const std::string_view eol = encoding == RegEncoding::Utf16le ? "\r\n" : "\n";
    std::string text(header5);
    text += eol;
    for (const auto& s : doc.sections) {
        text += eol;
        text += (s.remove ? "[-" : "[") + s.key + "]";
        text += eol;
        for (const auto& e : s.entries) {
            text += formatEntry(e, eol);
            text += eol;
        }
    }
    text += eol;
    if (encoding == RegEncoding::Utf8)
        return text;
    const auto wide = utf8ToUtf16le(text);
    return std::string("\xFF\xFE") + std::string(wide.begin(), wide.end());
}

} // namespace zebreader81::registry
