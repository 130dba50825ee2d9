#include "registry/TextCodec.h"

namespace zebreader81::registry {

namespace {

// Length of the well-formed UTF-8 sequence at text[i] and its code point; 0 when invalid.
size_t decodeOne(std::string_view text, size_t i, char32_t& cp)
{
    const auto b0 = static_cast<unsigned char>(text[i]);
    if (b0 < 0x80) {
        cp = b0;
        return 1;
    }
    size_t len = 0;
    char32_t min = 0;
    if ((b0 & 0xE0) == 0xC0) {
        len = 2, cp = b0 & 0x1F, min = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        len = 3, cp = b0 & 0x0F, min = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        len = 4, cp = b0 & 0x07, min = 0x10000;
    } else {
        return 0;
    }
    if (i + len > text.size())
        return 0;
    for (size_t k = 1; k < len; ++k) {
        const auto b = static_cast<unsigned char>(text[i + k]);
        if ((b & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return len;
}

void appendUtf8(std::string& out, char32_t cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

void appendUnit(std::vector<uint8_t>& out, uint32_t unit)
{
    out.push_back(static_cast<uint8_t>(unit & 0xFF));
    out.push_back(static_cast<uint8_t>(unit >> 8));
}

} // namespace

std::vector<uint8_t> utf8ToUtf16le(std::string_view text)
{
    std::vector<uint8_t> out;
    out.reserve(text.size() * 2);
    for (size_t i = 0; i < text.size();) {
        char32_t cp = 0;
        size_t len = decodeOne(text, i, cp);
        if (len == 0) {
            cp = static_cast<unsigned char>(text[i]);
            len = 1;
        }
        i += len;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            appendUnit(out, 0xD800 + (cp >> 10));
            appendUnit(out, 0xDC00 + (cp & 0x3FF));
        } else {
            appendUnit(out, cp);
        }
    }
    return out;
}

std::string utf16leToUtf8(const uint8_t* bytes, size_t size)
{
    std::string out;
    const size_t units = size / 2;
    for (size_t i = 0; i < units; ++i) {
        char32_t u = bytes[2 * i] | (bytes[2 * i + 1] << 8);
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < units) {
            const char32_t low = bytes[2 * i + 2] | (bytes[2 * i + 3] << 8);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                appendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
                ++i;
                continue;
            }
        }
        if (u >= 0xD800 && u <= 0xDFFF)
            u = 0xFFFD;
        appendUtf8(out, u);
    }
    return out;
}

bool isValidUtf8(std::string_view text)
{
    for (size_t i = 0; i < text.size();) {
        char32_t cp = 0;
        const size_t len = decodeOne(text, i, cp);
        if (len == 0)
            return false;
        i += len;
    }
    return true;
}

} // namespace zebreader81::registry
