// The port map lives in the settings store, one REG_SZ value "COM<N>" per port holding a
// device path. It is read from HKEY_CURRENT_USER\Software\ZEBReader81\Ports, then from
// HKEY_LOCAL_MACHINE\Software\ZEBReader81\Ports (a site-wide map an administrator keeps in
// /etc); it is written to the current user's key, which any user can write.
#include "registry/PortMap.h"

#include "registry/SettingsStore.h"

namespace zebreader81 {

namespace {

constexpr std::string_view portsKey = "Software\\ZEBReader81\\Ports";

std::string valueName(int port) { return "COM" + std::to_string(port); }

std::optional<std::string> lookUp(registry::Root root, int port)
{
    std::unique_ptr<registry::SettingsKey> key;
    if (registry::settingsStore().open(root, portsKey, registry::Access::Read, key) != registry::Status::Ok)
        return std::nullopt;
    registry::Value v;
    if (key->query(valueName(port), v) != registry::Status::Ok || !registry::isTextType(v.type))
        return std::nullopt;
    std::string path(v.data.begin(), v.data.end());
    path = path.substr(0, path.find('\0'));
    if (path.empty())
        return std::nullopt;
    return path;
}

} // namespace

std::optional<std::string> storedPortPath(int port)
{
    if (auto path = lookUp(registry::Root::CurrentUser, port))
        return path;
    return lookUp(registry::Root::LocalMachine, port);
}

bool storePortPath(int port, const std::string& path)
{
    auto& store = registry::settingsStore();
    std::unique_ptr<registry::SettingsKey> key;
    if (path.empty()) {
        const auto s = store.open(registry::Root::CurrentUser, portsKey, registry::Access::Write, key);
        if (s == registry::Status::NotFound)
            return true;
        if (s != registry::Status::Ok)
            return false;
        const auto r = key->remove(valueName(port));
        return r == registry::Status::Ok || r == registry::Status::NotFound;
    }
    if (store.create(registry::Root::CurrentUser, portsKey, key) != registry::Status::Ok)
        return false;
    return key->set(valueName(port), registry::Value::text(path)) == registry::Status::Ok;
}

} // namespace zebreader81
