// Families whose wire protocol this version does not speak.
#pragma once

#include <cstdint>

namespace zebreader81 {

class clsZEBReader;

/// Reports "The <display name> scanner is not supported by this version of ZEBReader81."
/// (kind 2, title "Unsupported Scanner") at `location`; returns False.
bool reportUnsupported(int32_t readerType, const char* location);
bool reportUnsupported(const clsZEBReader& reader, const char* location);

} // namespace zebreader81
