#include "registry/SettingsValues.h"

#include "registry/SettingsStore.h"

#include <cstdio>

namespace zebreader81::registry {

namespace {

// Query buffer of the settings helpers; a longer value does not fit.
constexpr size_t queryBufferSize = 1024;

} // namespace

std::string dwordText(std::string_view bytes)
{
    std::string hex;
    for (auto it = bytes.rbegin(); it != bytes.rend(); ++it) {
        char buf[4];
        std::snprintf(buf, sizeof buf, "%X", static_cast<unsigned char>(*it));
        hex += buf;
    }
    if (hex.empty())
        return "0";
    const uint32_t v = static_cast<uint32_t>(std::stoul(hex, nullptr, 16));
    if (hex.size() <= 4)
        return std::to_string(static_cast<int16_t>(static_cast<uint16_t>(v)));
    return std::to_string(static_cast<int32_t>(v));
}

std::string LoadValue(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey,
                      const std::string& sValueName, const std::string& sDefault)
{
    const auto root = rootFromHandle(lRegistryKey);
    if (!root)
        return sDefault;
    std::unique_ptr<SettingsKey> key;
    if (settingsStore().open(*root, sRegistrySubKey, Access::Read, key) != Status::Ok)
        return sDefault;
    Value value;
    if (key->query(sValueName, value) != Status::Ok || value.data.size() > queryBufferSize)
        return sDefault;
    std::string_view data(reinterpret_cast<const char*>(value.data.data()), value.data.size());
    data = data.substr(0, data.find('\0'));
    switch (value.type) {
    case REG_SZ:
    case REG_EXPAND_SZ: return std::string(data);
    case REG_DWORD: return dwordText(data);
    default: return {};
    }
}

bool SaveValue(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey,
               const std::string& sValueName, const std::string& sValue)
{
    const auto root = rootFromHandle(lRegistryKey);
    if (!root)
        return false;
    std::unique_ptr<SettingsKey> key;
    if (settingsStore().create(*root, sRegistrySubKey, key) != Status::Ok)
        return false;
    return key->set(sValueName, Value::text(sValue.empty() ? " " : sValue)) == Status::Ok;
}

} // namespace zebreader81::registry
