// The Windows side of StoreFixture: the keys the settings tests use, under the test
// prefix's HKEY_CURRENT_USER, removed before and after each test.
#include "registry/StoreFixture.h"

#include <windows.h>

namespace zebreader81::test {

namespace {

const char* const testKeys[] = {"Software\\Site", "Software\\Nowhere"};

void removeTestKeys()
{
    for (const char* key : testKeys)
        RegDeleteTreeA(HKEY_CURRENT_USER, key);
}

} // namespace

void StoreFixture::SetUp() { removeTestKeys(); }

void StoreFixture::TearDown() { removeTestKeys(); }

bool StoreFixture::anythingWritten() const
{
    for (const char* key : testKeys) {
        HKEY opened = nullptr;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) == ERROR_SUCCESS) {
            RegCloseKey(opened);
            return true;
        }
    }
    return false;
}

} // namespace zebreader81::test
