// The Linux backend of the settings store: one file per root in the registry editor's
// export format.
//
// Where the files are: HKEY_CURRENT_USER in $XDG_CONFIG_HOME/zebreader81/ (~/.config/zebreader81/
// when unset), the machine-wide roots in /etc/zebreader81/, every root in $ZEBREADER_REGISTRY
// when that is set; the file of a root is named for it ("HKEY_LOCAL_MACHINE.reg"). The
// environment is read at each call.
//
// Readers take no lock: a write replaces the whole file by rename (after writing and syncing
// a temporary file in the same folder), so a reader sees the old or the new file, never a
// part. Writers serialise on an advisory lock (flock) on ".<file>.lock" beside it and read the
// file again under the lock, so concurrent processes lose none of each other's values.
#pragma once

#include "registry/SettingsStore.h"

#include <string>

namespace zebreader81::registry {

/// Folder that holds the file of `root`.
std::string storeDirectory(Root root);
/// Path of the file of `root`.
std::string storeFile(Root root);

class FileStore : public SettingsStore {
public:
    Status open(Root root, std::string_view subKey, Access access,
                std::unique_ptr<SettingsKey>& key) override;
    Status create(Root root, std::string_view subKey, std::unique_ptr<SettingsKey>& key) override;
    Status read(Root root, Hive& out) override;
    Status update(Root root, const std::function<bool(Hive&)>& change) override;
};

} // namespace zebreader81::registry
