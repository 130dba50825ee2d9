// One root's keys and values in memory, with the registry's case-insensitive names.
#pragma once

#include "registry/RegFormat.h"
#include "registry/RegistryTypes.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zebreader81::registry {

/// Splits "HKEY_LOCAL_MACHINE\Software\X" into its root and sub-key path.
std::optional<std::pair<Root, std::string>> splitKeyName(std::string_view fullName);

/// The keys of one root. Key paths are compared without regard to ASCII case and keep the
/// spelling they were created with; empty components ("a\\b", a leading backslash) are
/// ignored; the empty path is the root itself, which always exists.
class Hive {
public:
    /// A key's values in the order they were first set; names ignore ASCII case. Change them
    /// through set and erase only.
    struct Key {
        std::string path;
        std::vector<std::pair<std::string, Value>> values;

        const Value* find(std::string_view name) const;
        /// True when the value was new or changed.
        bool set(std::string_view name, const Value& value);
        bool erase(std::string_view name);

    private:
        std::unordered_map<std::string, size_t> index_; // lower-case name -> position in values
    };

    Hive();

    const Key* find(std::string_view subKey) const;
    Key* find(std::string_view subKey);
    /// Opens or creates the key with its missing parents; `created` tells which.
    Key& create(std::string_view subKey, bool* created = nullptr);
    /// Removes the key and every key below it; the root itself cannot be removed.
    bool removeTree(std::string_view subKey);
    /// Direct sub-key names of a key.
    std::vector<std::string> subKeys(std::string_view subKey) const;

    /// Applies the sections of `doc` that lie under `root` (all when `others` is null, where a
    /// section of another root is an error at its line); sections of other roots go to `others`.
    std::optional<RegParseError> apply(const RegDocument& doc, Root root, RegDocument* others = nullptr);
    /// The keys under `subKey` (all by default) as sections in tree order; an empty root key is left out.
    RegDocument toDocument(Root root, std::string_view subKey = {}) const;

private:
    std::map<std::string, Key> keys_;
};

} // namespace zebreader81::registry
