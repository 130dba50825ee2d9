#include "registry/RegFile.h"

#include "core/basError.h"
#include "registry/SettingsStore.h"

#include <cerrno>
#include <fstream>
#include <map>
#include <sstream>

namespace zebreader81::registry {

namespace {

constexpr const char* importLocation = "ZEBReader81 - basRegistry.ImportRegFile";
constexpr const char* exportLocation = "ZEBReader81 - basRegistry.ExportRegFile";
constexpr int32_t fileNotFound = 53;
constexpr int32_t pathFileAccessError = 75;
constexpr int32_t invalidFileFormat = 321;

void report(int32_t number, const std::string& description, const char* where)
{
    basError::ReportError(0, number, basError::KindRuntime, description, where);
}

std::string describe(Status s)
{
    switch (s) {
    case Status::AccessDenied: return "access denied";
    case Status::BadFile: return "its store file is damaged";
    case Status::NotFound: return "not found";
    default: return "input/output error";
    }
}

} // namespace

bool importRegFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        const bool missing = errno == ENOENT;
        report(missing ? fileNotFound : pathFileAccessError,
               (missing ? "File not found: " : "Path/File access error: ") + path, importLocation);
        return false;
    }
    std::ostringstream bytes;
    bytes << in.rdbuf();
    RegDocument doc;
    if (const auto error = parseRegFile(bytes.str(), doc)) {
        report(invalidFileFormat,
               "Invalid file format: " + path + ", line " + std::to_string(error->line) + ": " +
                   error->message,
               importLocation);
        return false;
    }
    // Sorted by root first, so that nothing is written when any key names an unknown root.
    std::map<Root, RegDocument> byRoot;
    for (const auto& section : doc.sections) {
        const auto split = splitKeyName(section.key);
        if (!split) {
            report(invalidFileFormat,
                   "Invalid file format: " + path + ": the key [" + section.key +
                       "] does not start with a known root",
                   importLocation);
            return false;
        }
        byRoot[split->first].sections.push_back(section);
    }
    BadFileReportScope scope;
    bool ok = true;
    for (const auto& entry : byRoot) {
        // Named copies: clang 14 cannot capture structured bindings.
        const auto& root = entry.first;
        const auto& part = entry.second;
        const Status s = settingsStore().update(root, [&](Hive& hive) {
            hive.apply(part, root);
            return true;
        });
        if (s != Status::Ok) {
            report(pathFileAccessError,
                   "Path/File access error: " + std::string(rootName(root)) + ": " + describe(s),
                   importLocation);
            ok = false;
        }
    }
    return ok;
}

bool exportRegFile(const std::string& path, Root root, const std::string& subKey, RegEncoding encoding)
{
    Hive hive;
    if (const Status s = settingsStore().read(root, hive); s != Status::Ok) {
        report(pathFileAccessError,
               "Path/File access error: " + std::string(rootName(root)) + ": " + describe(s), exportLocation);
        return false;
    }
    if (!hive.find(subKey)) {
        report(err::InvalidProcedureCall,
               "Invalid procedure call or argument: the key " + std::string(rootName(root)) + "\\" + subKey +
                   " does not exist",
               exportLocation);
        return false;
    }
    const std::string text = formatRegFile(hive.toDocument(root, subKey), encoding);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        report(pathFileAccessError, "Path/File access error: " + path, exportLocation);
        return false;
    }
    return true;
}

} // namespace zebreader81::registry
