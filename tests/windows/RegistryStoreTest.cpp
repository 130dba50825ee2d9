// The settings helpers on the real registry: every root, and what the keys they create
// look like to other registry users.
#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace zebreader81::test {
namespace {

struct RootCase {
    zebReaderRegistryKey root;
    HKEY handle;
    const char* subKey; // where a test may write under that root
};

// HKEY_USERS only holds profiles, so its test key lies in the default one.
const RootCase writableRoots[] = {
    {zebReaderRegistryKeyClassesRoot, HKEY_CLASSES_ROOT, "ZEBReader81Test"},
    {zebReaderRegistryKeyCurrentUser, HKEY_CURRENT_USER, "Software\\ZEBReader81Test"},
    {zebReaderRegistryKeyLocalMachine, HKEY_LOCAL_MACHINE, "Software\\ZEBReader81Test"},
    {zebReaderRegistryKeyUsers, HKEY_USERS, ".DEFAULT\\Software\\ZEBReader81Test"},
    {zebReaderRegistryKeyCurrentConfig, HKEY_CURRENT_CONFIG, "Software\\ZEBReader81Test"},
};

TEST(RegistryStore, EveryRootRoundTripsThroughTheHelpersAndRefusesWhatItShould)
{
    const auto removeAll = [] {
        for (const auto& c : writableRoots)
            RegDeleteTreeA(c.handle, c.subKey);
    };
    removeAll();
    for (const auto& c : writableRoots) {
        SCOPED_TRACE(c.subKey);
        EXPECT_EQ(registry::LoadValue(c.root, c.subKey, "TimeOut", "10"), "10");
        ASSERT_TRUE(registry::SaveValue(c.root, c.subKey, "TimeOut", "42"));
        EXPECT_EQ(registry::LoadValue(c.root, c.subKey, "TimeOut", "10"), "42");

        // What another program sees: REG_SZ with the text's own length, a key of class "1".
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyExA(c.handle, c.subKey, 0, KEY_READ, &key), ERROR_SUCCESS);
        char data[16] = {};
        DWORD type = 0, size = sizeof data;
        EXPECT_EQ(RegQueryValueExA(key, "TimeOut", nullptr, &type, reinterpret_cast<BYTE*>(data), &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
        EXPECT_STREQ(data, "42");
        EXPECT_EQ(size, 2u);
        char keyClass[8] = {};
        DWORD classSize = sizeof keyClass;
        EXPECT_EQ(RegQueryInfoKeyA(key, keyClass, &classSize, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        EXPECT_STREQ(keyClass, "1");
        RegCloseKey(key);
    }

    // Performance data holds no keys; a key opened for reading refuses writes.
    constexpr auto performance = zebReaderRegistryKeyPerformanceData;
    EXPECT_EQ(registry::LoadValue(performance, "Software\\ZEBReader81Test", "TimeOut", "10"), "10");
    EXPECT_FALSE(registry::SaveValue(performance, "Software\\ZEBReader81Test", "TimeOut", "1"));
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\ZEBReader81Test", "A", "1"));
    std::unique_ptr<registry::SettingsKey> key;
    ASSERT_EQ(registry::settingsStore().open(registry::Root::CurrentUser, "Software\\ZEBReader81Test",
                                             registry::Access::Read, key),
              registry::Status::Ok);
    EXPECT_EQ(key->set("A", registry::Value::text("2")), registry::Status::AccessDenied);
    EXPECT_EQ(registry::LoadValue(zebReaderRegistryKeyCurrentUser, "Software\\ZEBReader81Test", "A", "?"),
              "1");
    removeAll();
}

} // namespace
} // namespace zebreader81::test
