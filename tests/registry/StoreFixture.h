// A fresh settings store folder per test (ZEBREADER_REGISTRY), removed afterwards.
#pragma once

#include "registry/FileStore.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace zebreader81::test {

class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Path of a root's file in the folder of this test.
    std::string fileOf(registry::Root root) const { return registry::storeFile(root); }
    std::string readFile(const std::string& path) const;
    void writeFile(const std::string& path, const std::string& bytes) const;

    std::filesystem::path dir;

private:
    std::optional<std::string> savedEnv_;
};

} // namespace zebreader81::test
