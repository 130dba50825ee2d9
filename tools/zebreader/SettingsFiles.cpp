#include "SettingsFiles.h"

#include "registry/FileStore.h"
#include "registry/Hive.h"
#include "registry/RegFile.h"
#include "registry/SettingsStore.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <unistd.h>

namespace zebreader::cli {

namespace registry = zebreader81::registry;

namespace {

registry::Root rootOf(zebreader81::zebReaderRegistryKey key)
{
    return registry::rootFromHandle(static_cast<uint32_t>(key)).value_or(registry::Root::CurrentUser);
}

// A value as text: texts as they are, numbers in decimal, anything else as hex bytes.
std::string valueText(const registry::Value& v)
{
    if (registry::isTextType(v.type)) {
        std::string text(v.data.begin(), v.data.end());
        return text.substr(0, text.find('\0'));
    }
    if (v.type == registry::REG_DWORD && v.data.size() == 4)
        return std::to_string(static_cast<uint32_t>(v.data[0]) | static_cast<uint32_t>(v.data[1]) << 8 |
                              static_cast<uint32_t>(v.data[2]) << 16 |
                              static_cast<uint32_t>(v.data[3]) << 24);
    std::string hex;
    for (auto b : v.data) {
        char h[4];
        std::snprintf(h, sizeof h, "%s%02x", hex.empty() ? "" : ",", b);
        hex += h;
    }
    return "hex(" + std::to_string(v.type) + "):" + hex;
}

} // namespace

bool storedValues(zebreader81::zebReaderRegistryKey root, const std::string& subKey,
                  std::vector<std::pair<std::string, std::string>>& out)
{
    registry::Hive hive;
    if (registry::settingsStore().read(rootOf(root), hive) != registry::Status::Ok) {
        std::cerr << "zebreader: the settings store cannot be read\n";
        return false;
    }
    const auto* key = hive.find(subKey);
    if (!key) {
        std::cerr << "zebreader: no settings under " << subKey << "\n";
        return false;
    }
    for (const auto& [name, value] : key->values)
        out.emplace_back(name, valueText(value));
    return true;
}

namespace {

// How many values root\subKey holds; nullopt when the store cannot be read.
std::optional<std::size_t> storedCount(zebreader81::zebReaderRegistryKey root, const std::string& subKey)
{
    registry::Hive hive;
    if (registry::settingsStore().read(rootOf(root), hive) != registry::Status::Ok)
        return std::nullopt;
    const auto* key = hive.find(subKey);
    return key ? key->values.size() : 0;
}

} // namespace

bool nothingStored(zebreader81::zebReaderRegistryKey root, const std::string& subKey)
{
    return storedCount(root, subKey) == std::optional<std::size_t>(0);
}

bool somethingStored(zebreader81::zebReaderRegistryKey root, const std::string& subKey)
{
    return storedCount(root, subKey).value_or(0) > 0;
}

std::string saveProblem(zebreader81::zebReaderRegistryKey root, const std::string& subKey,
                        const std::vector<std::pair<std::string, std::string>>& expected)
{
    const std::string file = registry::storeFile(rootOf(root));
    registry::Hive hive;
    const auto status = registry::settingsStore().read(rootOf(root), hive);
    if (status == registry::Status::BadFile)
        return file + " is damaged and was left as it is: repair or remove it";
    const std::string folder = registry::storeDirectory(rootOf(root));
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec))
        return "the folder " + folder + " does not exist and cannot be made";
    if (::access(folder.c_str(), W_OK) != 0)
        return "cannot write in " + folder + ": " + std::strerror(errno);
    if (status != registry::Status::Ok)
        return "cannot read " + file + " back";
    const auto* key = hive.find(subKey);
    for (const auto& [name, text] : expected) {
        const auto* value = key ? key->find(name) : nullptr;
        if (!value)
            return name + " is missing from " + file;
        if (valueText(*value) != text)
            return name + " reads back as \"" + valueText(*value) + "\", not \"" + text + "\"";
    }
    return {};
}

bool importRegFile(const std::string& path) { return registry::importRegFile(path); }

bool exportRegFile(zebreader81::zebReaderRegistryKey root, const std::string& subKey, const std::string& path,
                   bool utf8)
{
    return registry::exportRegFile(path, rootOf(root), subKey,
                                   utf8 ? registry::RegEncoding::Utf8 : registry::RegEncoding::Utf16le);
}

} // namespace zebreader::cli
