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
/// True when the store can be read and holds no value directly under root\subKey.
bool nothingStored(zebreader81::zebReaderRegistryKey root, const std::string& subKey);
/// True when the store can be read and holds values directly under root\subKey.
bool somethingStored(zebreader81::zebReaderRegistryKey root, const std::string& subKey);
/// Why `expected` is not what root\subKey holds now ("" when it is): the values read back
/// from the store after a save, checked one by one.
std::string saveProblem(zebreader81::zebReaderRegistryKey root, const std::string& subKey,
                        const std::vector<std::pair<std::string, std::string>>& expected);
/// Merges a registry export file into the store.
bool importRegFile(const std::string& path);
/// Writes root\subKey and everything below it as a registry export file: UTF-16 as the
/// registry editor writes it, or UTF-8.
bool exportRegFile(zebreader81::zebReaderRegistryKey root, const std::string& subKey, const std::string& path,
                   bool utf8);

} // namespace zebreader::cli
