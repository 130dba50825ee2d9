// Import and export of registry editor files (.reg) into and out of the settings store.
//
// Both report failures through the error reporter (53 file not found, 75 path/file access
// error, 321 invalid file format, 5 for a key that does not exist) at
// "ZEBReader81 - basRegistry.ImportRegFile" / ".ExportRegFile" and return false.
#pragma once

#include "registry/RegFormat.h"
#include "registry/RegistryTypes.h"

#include <string>

namespace zebreader81::registry {

/// Merges a .reg file into the store as the registry editor would: keys are created, values
/// set, "name"=- deletes a value and [-key] a key with its sub-keys. The file may name any
/// root and be UTF-16LE (the editor's own export) or UTF-8, with CRLF or LF line ends. A file
/// that does not parse changes nothing; otherwise each root is changed in one step.
bool importRegFile(const std::string& path);

/// Writes `subKey` of `root` with every key below it (the whole root for an empty sub-key)
/// to `path`, by default as the registry editor exports (UTF-16LE with its mark, CRLF).
bool exportRegFile(const std::string& path, Root root, const std::string& subKey,
                   RegEncoding encoding = RegEncoding::Utf16le);

} // namespace zebreader81::registry
