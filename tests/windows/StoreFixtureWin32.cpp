// The Windows side of StoreFixture: each test gets an HKEY_CURRENT_USER of its own, a key of
// the prefix's one named after the process, so tests that run at once keep apart.
#include "registry/StoreFixture.h"

#include <windows.h>

#include <string>

namespace zebreader81::test {

namespace {

HKEY ownUser = nullptr;

std::string ownUserName() { return "Software\\ZEBReader81Tests\\" + std::to_string(GetCurrentProcessId()); }

} // namespace

void StoreFixture::SetUp()
{
    RegDeleteTreeA(HKEY_CURRENT_USER, ownUserName().c_str());
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, ownUserName().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &ownUser, nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, ownUser), ERROR_SUCCESS);
}

void StoreFixture::TearDown()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(ownUser);
    RegDeleteTreeA(HKEY_CURRENT_USER, ownUserName().c_str());
}

bool StoreFixture::anythingWritten() const
{
    DWORD keys = 0, values = 0;
    RegQueryInfoKeyA(ownUser, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr,
                     nullptr, nullptr);
    return keys + values > 0;
}

} // namespace zebreader81::test
