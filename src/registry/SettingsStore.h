// The settings store: registry semantics (six roots, case-insensitive sub-key paths, typed
// values) behind one interface, so that a platform can put its own registry behind it.
//
// Errors are results, never exceptions. A store file that cannot be parsed is reported
// through the error reporter (number 321) and never overwritten.
#pragma once

#include "registry/Hive.h"
#include "registry/RegistryTypes.h"

#include <functional>
#include <memory>
#include <string_view>

namespace zebreader81::registry {

enum class Status {
    Ok,
    NotFound,     ///< no such key or value
    AccessDenied, ///< the root cannot be written (or read) by this process
    BadFile,      ///< the root's file does not parse (reported, left as it is)
    IoError,      ///< any other failure of the file system
};

/// An open key. Closed when destroyed.
class SettingsKey {
public:
    virtual ~SettingsKey() = default;
    /// The value called `name` ("" is the default value).
    virtual Status query(std::string_view name, Value& out) = 0;
    /// Writes a value at once; AccessDenied on a key opened for reading.
    virtual Status set(std::string_view name, const Value& value) = 0;
    /// Deletes a value; NotFound when there was none.
    virtual Status remove(std::string_view name) = 0;
};

enum class Access { Read, Write };

class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    /// Opens an existing key (KEY_READ or KEY_WRITE); NotFound when it does not exist.
    virtual Status open(Root root, std::string_view subKey, Access access,
                        std::unique_ptr<SettingsKey>& key) = 0;
    /// Opens a key for writing, creating it and its parents when missing.
    virtual Status create(Root root, std::string_view subKey, std::unique_ptr<SettingsKey>& key) = 0;
    /// A snapshot of every key of a root.
    virtual Status read(Root root, Hive& out) = 0;
    /// Changes a root as one step: `change` gets the current keys and says whether it changed
    /// them; no other writer comes between the read and the write.
    virtual Status update(Root root, const std::function<bool(Hive&)>& change) = 0;
};

/// The store of this process (on Linux the file store of FileStore.h).
SettingsStore& settingsStore();

/// While one is alive on a thread, a damaged store file is reported there only once, so one
/// public operation that touches it value by value makes one report.
class BadFileReportScope {
public:
    BadFileReportScope();
    ~BadFileReportScope();
    BadFileReportScope(const BadFileReportScope&) = delete;
    BadFileReportScope& operator=(const BadFileReportScope&) = delete;
};

} // namespace zebreader81::registry
