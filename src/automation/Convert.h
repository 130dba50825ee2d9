// Conversions between the core's types and automation types (BSTR, VARIANT_BOOL, SAFEARRAY,
// VARIANT). Failures throw AutomationError, caught at the COM boundary.
#pragma once

#include "zebreader81/CollectionIndex.h"
#include "zebreader81/SafeArray.h"

#include <windows.h>

#include <oaidl.h>

#include <optional>
#include <string>
#include <type_traits>

namespace zebreader81::automation {

/// One byte per character, through the ANSI code page both ways.
std::wstring widen(const std::string& text);
std::string narrow(const wchar_t* text, std::size_t length);

BSTR toBstr(const std::string& text);
std::string fromBstr(BSTR text);
inline VARIANT_BOOL toVariantBool(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }

/// Empty core arrays travel as null SAFEARRAYs (an array never dimensioned).
SAFEARRAY* toSafeArray(const SafeArray<int16_t>& value);
SAFEARRAY* toSafeArray(const SafeArray<std::string>& value);
/// Reads an array of any element type that converts (Integer, Long, Variant...).
SafeArray<int16_t> shortsFrom(const SAFEARRAY* value);
SafeArray<std::string> stringsFrom(const SAFEARRAY* value);

/// Copy of `source` with the same dimensions and bounds and elements converted to `type`.
SAFEARRAY* coerceArray(SAFEARRAY* source, VARTYPE type);

/// The VARIANT a by-reference VARIANT points at, or the argument itself.
const VARIANT& deref(const VARIANT& value);
/// False for a missing optional argument.
bool isGiven(const VARIANT& value);
/// A collection index: a text is a key, anything numeric a position.
CollectionIndex indexFrom(const VARIANT& value);
std::optional<CollectionIndex> optionalIndex(const VARIANT& value);

/// Core value to the automation type a getter returns.
template <class Core, class Com> void toCom(const Core& value, Com* out)
{
    if constexpr (std::is_same_v<Core, bool>)
        *out = toVariantBool(value);
    else if constexpr (std::is_same_v<Core, std::string>)
        *out = toBstr(value);
    else if constexpr (std::is_same_v<Core, SafeArray<int16_t>> ||
                       std::is_same_v<Core, SafeArray<std::string>>)
        *out = toSafeArray(value);
    else
        *out = static_cast<Com>(value);
}

/// Automation argument to the core type a setter takes.
template <class Core, class Com> Core fromCom(Com value)
{
    if constexpr (std::is_same_v<Core, bool>)
        return value != 0;
    else if constexpr (std::is_same_v<Core, std::string>)
        return fromBstr(value);
    else
        return static_cast<Core>(value);
}

} // namespace zebreader81::automation
