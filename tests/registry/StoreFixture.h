// A fresh settings store per test: on Linux a store folder (ZEBREADER_REGISTRY), on Windows an
// HKEY_CURRENT_USER of the test's own; removed afterwards.
#pragma once

#include "registry/SettingsStore.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace zebreader81::test {

class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// True when the test has written anything to the store.
    bool anythingWritten() const;
#ifndef _WIN32
    /// Path of a root's file in the folder of this test.
    std::string fileOf(registry::Root root) const;
    std::string readFile(const std::string& path) const;
    void writeFile(const std::string& path, const std::string& bytes) const;

    std::filesystem::path dir;

private:
    std::optional<std::string> savedEnv_;
#endif
};

} // namespace zebreader81::test
