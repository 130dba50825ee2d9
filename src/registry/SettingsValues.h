// The reader's two settings helpers: one value at a time, always as text.
#pragma once

#include "zebreader81/enums.h"

#include <string>
#include <string_view>

namespace zebreader81::registry {

/// The text of a value under a root and sub-key, or `sDefault` when the root is not one of the
/// six, the key or value is missing or the value is over 1,024 bytes. The data is cut at its
/// first zero byte; REG_SZ and REG_EXPAND_SZ give their text, REG_DWORD its decimal text by
/// dwordText, any other type an empty text.
std::string LoadValue(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey,
                      const std::string& sValueName, const std::string& sDefault);

/// Writes a text as REG_SZ, creating the key when missing; an empty text is stored as one
/// blank. False when the root cannot be written.
bool SaveValue(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey,
               const std::string& sValueName, const std::string& sValue);

/// The decimal text of REG_DWORD data already cut at its first zero byte: the bytes from the
/// last to the first, each as hexadecimal without zero padding, read as a "&h" literal (four
/// digits or fewer are a 16-bit Integer, more a 32-bit Long); no bytes give "0".
std::string dwordText(std::string_view bytes);

} // namespace zebreader81::registry
