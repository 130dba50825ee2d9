#include "registry/Win32Store.h"

#include <windows.h>

namespace zebreader81::registry {

namespace {

// Query buffer of the settings helpers; a longer value does not fit.
constexpr DWORD queryBufferSize = 1024;

// The predefined handles are sign-extended on 64-bit Windows, so they are not the
// zero-extended numbers of Root.
HKEY rootKey(Root root)
{
    switch (root) {
    case Root::ClassesRoot: return HKEY_CLASSES_ROOT;
    case Root::CurrentUser: return HKEY_CURRENT_USER;
    case Root::LocalMachine: return HKEY_LOCAL_MACHINE;
    case Root::Users: return HKEY_USERS;
    case Root::PerformanceData: return HKEY_PERFORMANCE_DATA;
    case Root::CurrentConfig: return HKEY_CURRENT_CONFIG;
    }
    return nullptr;
}

Status fromError(LSTATUS rc)
{
    switch (rc) {
    case ERROR_SUCCESS: return Status::Ok;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: return Status::NotFound;
    case ERROR_ACCESS_DENIED: return Status::AccessDenied;
    default: return Status::IoError;
    }
}

// The registry's ANSI calls take terminated names.
std::string terminated(std::string_view s) { return std::string(s); }

class Win32Key final : public SettingsKey {
public:
    Win32Key(HKEY key, Access access) : key_(key), access_(access) {}
    ~Win32Key() override { RegCloseKey(key_); }
    Win32Key(const Win32Key&) = delete;
    Win32Key& operator=(const Win32Key&) = delete;

    Status query(std::string_view name, Value& out) override
    {
        BYTE buffer[queryBufferSize];
        DWORD type = REG_NONE;
        DWORD size = sizeof buffer;
        const LSTATUS rc = RegQueryValueExA(key_, terminated(name).c_str(), nullptr, &type, buffer, &size);
        if (rc != ERROR_SUCCESS)
            return fromError(rc);
        // A text's data includes its terminator when it was written with one.
        if ((type == REG_SZ || type == REG_EXPAND_SZ) && size > 0 && buffer[size - 1] == 0)
            --size;
        out.type = type;
        out.data.assign(buffer, buffer + size);
        return Status::Ok;
    }

    Status set(std::string_view name, const Value& value) override
    {
        if (access_ != Access::Write)
            return Status::AccessDenied;
        return fromError(RegSetValueExA(key_, terminated(name).c_str(), 0, value.type, value.data.data(),
                                        static_cast<DWORD>(value.data.size())));
    }

    Status remove(std::string_view name) override
    {
        if (access_ != Access::Write)
            return Status::AccessDenied;
        return fromError(RegDeleteValueA(key_, terminated(name).c_str()));
    }

private:
    HKEY key_;
    Access access_;
};

} // namespace

Status Win32Store::open(Root root, std::string_view subKey, Access access, std::unique_ptr<SettingsKey>& key)
{
    HKEY opened = nullptr;
    const REGSAM sam = access == Access::Write ? KEY_WRITE : KEY_READ;
    if (const LSTATUS rc = RegOpenKeyExA(rootKey(root), terminated(subKey).c_str(), 0, sam, &opened);
        rc != ERROR_SUCCESS)
        return fromError(rc);
    key = std::make_unique<Win32Key>(opened, access);
    return Status::Ok;
}

Status Win32Store::create(Root root, std::string_view subKey, std::unique_ptr<SettingsKey>& key)
{
    HKEY created = nullptr;
    DWORD disposition = 0;
    char keyClass[] = "1";
    if (const LSTATUS rc = RegCreateKeyExA(rootKey(root), terminated(subKey).c_str(), 0, keyClass, 0,
                                           KEY_WRITE, nullptr, &created, &disposition);
        rc != ERROR_SUCCESS)
        return fromError(rc);
    key = std::make_unique<Win32Key>(created, Access::Write);
    return Status::Ok;
}

Status Win32Store::read(Root, Hive&) { return Status::IoError; }

Status Win32Store::update(Root, const std::function<bool(Hive&)>&) { return Status::IoError; }

SettingsStore& settingsStore()
{
    static Win32Store store;
    return store;
}

// No store file, so nothing is ever reported as damaged.
BadFileReportScope::BadFileReportScope() = default;
BadFileReportScope::~BadFileReportScope() = default;

} // namespace zebreader81::registry
