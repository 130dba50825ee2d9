#include "StoreFixture.h"

#include "registry/FileStore.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace zebreader81::test {

void StoreFixture::SetUp()
{
    if (const char* v = std::getenv("ZEBREADER_REGISTRY"))
        savedEnv_ = v;
    std::string tmpl = (std::filesystem::temp_directory_path() / "zebreg.XXXXXX").string();
    ASSERT_NE(mkdtemp(tmpl.data()), nullptr);
    dir = tmpl;
    setenv("ZEBREADER_REGISTRY", dir.c_str(), 1);
}

void StoreFixture::TearDown()
{
    std::error_code ec;
    std::filesystem::permissions(dir, std::filesystem::perms::owner_all, ec);
    std::filesystem::remove_all(dir, ec);
    if (savedEnv_)
        setenv("ZEBREADER_REGISTRY", savedEnv_->c_str(), 1);
    else
        unsetenv("ZEBREADER_REGISTRY");
}

bool StoreFixture::anythingWritten() const { return !std::filesystem::is_empty(dir); }

std::string StoreFixture::fileOf(registry::Root root) const { return registry::storeFile(root); }

std::string StoreFixture::readFile(const std::string& path) const
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void StoreFixture::writeFile(const std::string& path, const std::string& bytes) const
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

} // namespace zebreader81::test
