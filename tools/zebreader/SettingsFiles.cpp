#include "SettingsFiles.h"

#include <iostream>

namespace zebreader::cli {

namespace {

bool unavailable()
{
    std::cerr << "zebreader: this build has no settings store\n";
    return false;
}

} // namespace

bool storedValues(zebreader81::zebReaderRegistryKey, const std::string&,
                  std::vector<std::pair<std::string, std::string>>&)
{
    return unavailable();
}
bool importRegFile(const std::string&) { return unavailable(); }
bool exportRegFile(zebreader81::zebReaderRegistryKey, const std::string&, const std::string&)
{
    return unavailable();
}

} // namespace zebreader::cli
