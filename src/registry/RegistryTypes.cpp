#include "registry/RegistryTypes.h"

#include <cctype>

namespace zebreader81::registry {

namespace {

struct RootNames {
    Root root;
    std::string_view name, abbreviation;
};

constexpr RootNames names[] = {
    {Root::ClassesRoot, "HKEY_CLASSES_ROOT", "HKCR"},
    {Root::CurrentUser, "HKEY_CURRENT_USER", "HKCU"},
    {Root::LocalMachine, "HKEY_LOCAL_MACHINE", "HKLM"},
    {Root::Users, "HKEY_USERS", "HKU"},
    {Root::PerformanceData, "HKEY_PERFORMANCE_DATA", "HKPD"},
    {Root::CurrentConfig, "HKEY_CURRENT_CONFIG", "HKCC"},
};

bool equalNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

} // namespace

std::optional<Root> rootFromHandle(int64_t handle)
{
    const auto h = static_cast<uint32_t>(handle);
    if (h >= 0x80000000u && h <= 0x80000005u && (handle == h || handle == static_cast<int32_t>(h)))
        return static_cast<Root>(h);
    return std::nullopt;
}

std::string_view rootName(Root root)
{
    for (const auto& n : names)
        if (n.root == root)
            return n.name;
    return {};
}

std::optional<Root> rootFromName(std::string_view name)
{
    for (const auto& n : names)
        if (equalNoCase(name, n.name) || equalNoCase(name, n.abbreviation))
            return n.root;
    return std::nullopt;
}

Value Value::text(std::string_view s, uint32_t type)
{
    return Value{type, std::vector<uint8_t>(s.begin(), s.end())};
}

Value Value::dword(uint32_t v)
{
    return Value{REG_DWORD,
                 {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v >> 16),
                  static_cast<uint8_t>(v >> 24)}};
}

} // namespace zebreader81::registry
