// The registry editor's export format (".reg"): pure parsing and writing of its text.
#pragma once

#include "registry/RegistryTypes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zebreader81::registry {

/// One value line: "name"=data, @=data for the default value (empty name), "name"=- to delete.
struct RegEntry {
    std::string name;
    bool remove = false;
    Value value;
};

/// One [key] section, the key written with its root ("HKEY_CURRENT_USER\Software\X");
/// [-key] deletes the key with its sub-keys.
struct RegSection {
    std::string key;
    bool remove = false;
    std::vector<RegEntry> entries;
    int line = 0; // of the [key] in the text it was read from, for reports
};

struct RegDocument {
    std::vector<RegSection> sections;
};

struct RegParseError {
    int line = 0;
    std::string message;
};

/// Parses the bytes of a .reg file: UTF-16LE with its byte-order mark (the editor's own
/// files), or UTF-8 with or without one; CRLF or LF; "Windows Registry Editor Version 5.00"
/// or "REGEDIT4" (whose hex(2)/hex(7) texts are single-byte). Lines starting with ';' are
/// comments; hex lists continue over lines ending in a backslash.
std::optional<RegParseError> parseRegFile(std::string_view bytes, RegDocument& out);

enum class RegEncoding {
    Utf16le, ///< as the registry editor writes: byte-order mark, CRLF line ends
    Utf8,    ///< the store's own files: UTF-8 without a mark, LF line ends
};

/// Writes a document under the "Windows Registry Editor Version 5.00" header.
std::string formatRegFile(const RegDocument& doc, RegEncoding encoding);

} // namespace zebreader81::registry
