// UTF-8 and UTF-16LE conversions for the export format's texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::registry {

/// UTF-16LE bytes of a UTF-8 text; a byte that is not valid UTF-8 stands for the
/// character of the same code (Latin-1), so nothing is dropped.
std::vector<uint8_t> utf8ToUtf16le(std::string_view text);
/// UTF-8 text of UTF-16LE bytes; an unpaired surrogate becomes U+FFFD, an odd last byte
/// is ignored.
std::string utf16leToUtf8(const uint8_t* bytes, size_t size);
/// True when `text` is well-formed UTF-8.
bool isValidUtf8(std::string_view text);

} // namespace zebreader81::registry
