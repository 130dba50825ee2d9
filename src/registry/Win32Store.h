// The Windows backend of the settings store: the registry itself, through the ANSI calls.
#pragma once

#include "registry/SettingsStore.h"

namespace zebreader81::registry {

/// Keys are opened with RegOpenKeyExA (KEY_READ or KEY_WRITE) and created with
/// RegCreateKeyExA (options 0, class "1"); a query reads into 1,024 bytes, so a longer value
/// fails with IoError. Whole-root snapshots are not offered (read and update give IoError):
/// the registry has its own editor.
class Win32Store : public SettingsStore {
public:
    Status open(Root root, std::string_view subKey, Access access,
                std::unique_ptr<SettingsKey>& key) override;
    Status create(Root root, std::string_view subKey, std::unique_ptr<SettingsKey>& key) override;
    Status read(Root root, Hive& out) override;
    Status update(Root root, const std::function<bool(Hive&)>& change) override;
};

} // namespace zebreader81::registry
