// The settings store seen as files and raw values: what `settings show`, `import` and
// `export` need beyond the reader's own LoadSettings and SaveSettings.
#pragma once

#include "zebreader81/enums.h"

#include <string>
#include <utility>
#include <vector>

namespace zebreader::cli {

/// The values stored directly under root\subKey, as text, in the store's order. False
/// (after a report) when the store cannot be read.
bool storedValues(zebreader81::zebReaderRegistryKey root, const std::string& subKey,
                  std::vector<std::pair<std::string, std::string>>& out);
/// Merges a registry export file into the store.
bool importRegFile(const std::string& path);
/// Writes root\subKey and everything below it as a registry export file: UTF-16 as the
/// registry editor writes it, or UTF-8.
bool exportRegFile(zebreader81::zebReaderRegistryKey root, const std::string& subKey, const std::string& path,
                   bool utf8);

} // namespace zebreader::cli
