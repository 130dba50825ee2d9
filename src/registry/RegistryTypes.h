// Roots, value types and values of the settings store, as the registry defines them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::registry {

/// The predefined root handles (the values of zebReaderRegistryKey).
enum class Root : uint32_t {
    ClassesRoot = 0x80000000u,
    CurrentUser = 0x80000001u,
    LocalMachine = 0x80000002u,
    Users = 0x80000003u,
    PerformanceData = 0x80000004u,
    CurrentConfig = 0x80000005u,
};

/// Every root, in handle order.
inline constexpr Root allRoots[] = {Root::ClassesRoot, Root::CurrentUser,     Root::LocalMachine,
                                    Root::Users,       Root::PerformanceData, Root::CurrentConfig};

/// The root of a handle value, if it is one of the six.
std::optional<Root> rootFromHandle(int64_t handle);
/// "HKEY_CURRENT_USER" and the like.
std::string_view rootName(Root root);
/// The root of a full name or its usual abbreviation (HKCU, HKLM, HKCR, HKU, HKCC), any case.
std::optional<Root> rootFromName(std::string_view name);

/// Value types (the registry's numbering).
inline constexpr uint32_t REG_NONE = 0;
inline constexpr uint32_t REG_SZ = 1;
inline constexpr uint32_t REG_EXPAND_SZ = 2;
inline constexpr uint32_t REG_BINARY = 3;
inline constexpr uint32_t REG_DWORD = 4;
inline constexpr uint32_t REG_DWORD_BIG_ENDIAN = 5;
inline constexpr uint32_t REG_MULTI_SZ = 7;
inline constexpr uint32_t REG_QWORD = 11;

/// A typed value. Texts (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) hold their narrow (UTF-8)
/// form, as the ANSI calls see it, without a final terminator for REG_SZ and REG_EXPAND_SZ;
/// every other type holds its raw bytes (REG_DWORD little-endian).
struct Value {
    uint32_t type = REG_NONE;
    std::vector<uint8_t> data;

    static Value text(std::string_view s, uint32_t type = REG_SZ);
    static Value dword(uint32_t v);
    bool operator==(const Value&) const = default;
};

/// True when the type keeps text in Value::data.
inline bool isTextType(uint32_t type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

} // namespace zebreader81::registry
