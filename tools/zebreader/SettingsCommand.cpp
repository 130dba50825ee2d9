// zebreader settings: the reader's settings in the settings store.
#include "CommandLine.h"
#include "ErrorSink.h"
#include "ReaderOptions.h"
#include "SettingsFiles.h"

#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "zebreader81/clsZEBReader.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <sstream>

namespace zebreader::cli {

using namespace zebreader81;
using json = nlohmann::ordered_json;
namespace registry = zebreader81::registry;

namespace {

struct SettingsOptions {
    std::string key = defaultSettingsKey;
    std::string root = "hkcu";
    bool json = false;
    std::string file;
    bool utf8 = false;
    ReaderOptions reader;
};

std::string text(bool v) { return v ? "True" : "False"; }
std::string text(float v)
{
    std::ostringstream s;
    s << v;
    return s.str();
}

// The values as the store holds them after SaveSettings, in LoadSettings' order.
std::vector<std::pair<std::string, std::string>> values(const clsZEBReader& r)
{
    return {{"ScannerType", std::to_string(r.ReaderType())},
            {"ReaderGrade", text(r.ReaderGrade())},
            {"Barcode", text(r.Barcode())},
            {"Duplex", text(r.Duplex())},
            {"Feeder", text(r.Feeder())},
            {"FlowControl", std::to_string(r.FlowControl())},
            {"MarkCutOff", std::to_string(r.MarkCutOff())},
            {"MarkDiscrimination", std::to_string(r.MarkDiscrimination())},
            {"Printer", text(r.Printer()->Enabled())},
            {"RecognitionThreshold", std::to_string(r.RecognitionThreshold())},
            {"Reject", text(r.Rejecter())},
            {"ScannerBaud", std::to_string(r.BaudRate())},
            {"ScannerDataBits", std::to_string(r.DataBits())},
            {"ScannerParity", r.Parity()},
            {"ScannerPort", std::to_string(r.Port())},
            {"ScannerStopBits", text(r.StopBits())},
            {"SleepTime", std::to_string(r.SleepTime())},
            {"TimeOut", std::to_string(r.TimeOut())},
            {"Windowing", text(r.Windowing())}};
}

void print(const std::vector<std::pair<std::string, std::string>>& list, bool asJson)
{
    if (asJson) {
        json j = json::object();
        for (const auto& [name, value] : list)
            j[name] = value;
        std::cout << j.dump(-1, ' ', false, json::error_handler_t::replace) << "\n";
        return;
    }
    for (const auto& [name, value] : list)
        std::cout << name << "=" << value << "\n";
}

// A sub-key that holds nothing would load as the defaults without a word.
void requireStored(const std::string& root, const std::string& key)
{
    if (nothingStored(parseRoot(root), key))
        throw UsageError("no settings are stored under " + key + " (" + root +
                         "): save some with `zebreader settings save --settings '" + key + "' ...`");
}

int finish(const ErrorSink& errors, bool ok) { return ok && errors.count() == 0 ? ExitOk : ExitFailed; }

int runLoad(const SettingsOptions& o)
{
    requireStored(o.root, o.key);
    auto errors = ErrorSink::install(o.json || !stdoutIsTerminal());
    clsZEBReader reader;
    const bool ok = reader.LoadSettings(parseRoot(o.root), o.key);
    print(values(reader), o.json);
    return finish(*errors, ok);
}

int runShow(const SettingsOptions& o)
{
    auto errors = ErrorSink::install(o.json || !stdoutIsTerminal());
    std::vector<std::pair<std::string, std::string>> stored;
    const bool ok = storedValues(parseRoot(o.root), o.key, stored);
    print(stored, o.json);
    return finish(*errors, ok);
}

int runSave(const SettingsOptions& o)
{
    auto errors = ErrorSink::install(o.json || !stdoutIsTerminal());
    // The store is read several times here; a damaged file is reported once.
    registry::BadFileReportScope oneReport;
    const auto root = parseRoot(o.root);
    // Only what the command line gives changes: the rest stays as stored.
    ReaderOptions options = o.reader;
    if (somethingStored(root, o.key)) {
        options.settings = o.key;
        options.root = o.root;
    }
    clsZEBReader reader;
    if (!options.apply(reader))
        return ExitFailed;
    bool ok = reader.SaveSettings(root, o.key);
    auto expected = values(reader);
    for (const auto& [name, text] : options.formValues()) {
        ok = registry::SaveValue(root, o.key, name, text) && ok;
        expected.emplace_back(name, text);
    }
    if (const std::string problem = saveProblem(root, o.key, expected); !problem.empty() || !ok) {
        std::cerr << "zebreader: the settings were not saved under " << o.key << ": "
                  << (problem.empty() ? "the store refused them" : problem) << "\n";
        return ExitFailed;
    }
    if (errors->count() > 0)
        return ExitFailed;
    std::cerr << "zebreader: saved the settings of " << reader.ReaderName() << " under " << o.key << "\n";
    return ExitOk;
}

int runImport(const SettingsOptions& o)
{
    auto errors = ErrorSink::install(o.json || !stdoutIsTerminal());
    return finish(*errors, importRegFile(o.file));
}

int runExport(const SettingsOptions& o)
{
    auto errors = ErrorSink::install(o.json || !stdoutIsTerminal());
    return finish(*errors, exportRegFile(parseRoot(o.root), o.key, o.file, o.utf8));
}

CLI::App* addAction(CLI::App& settings, const char* name, const char* description,
                    const std::shared_ptr<SettingsOptions>& o, int (*run)(const SettingsOptions&),
                    int& status)
{
    auto* c = settings.add_subcommand(name, description);
    c->add_option("--settings", o->key, "Sub-key of the settings")->capture_default_str();
    c->add_option("--root", o->root, "Settings root: hkcu or hklm")
        ->check(CLI::IsMember({"hkcu", "hklm"}, CLI::ignore_case));
    c->add_flag("--json", o->json, "Print json");
    c->callback([o, run, &status] { status = run(*o); });
    return c;
}

} // namespace

void addSettingsCommand(CLI::App& app, int& status)
{
    auto* settings = app.add_subcommand("settings", "Show, save, load, import and export saved settings");
    settings->require_subcommand(1);
    auto o = std::make_shared<SettingsOptions>();
    addAction(*settings, "show", "Print the values stored under the sub-key, as stored", o, runShow, status);
    addAction(*settings, "load", "Print the settings a reader loads from the sub-key (defaults filled in)", o,
              runLoad, status);
    auto* save =
        addAction(*settings, "save", "Save a model's defaults, changed by the flags, under the sub-key", o,
                  runSave, status);
    o->reader.addTo(*save, false);
    auto* import = addAction(*settings, "import", "Import a registry export (.reg) file into the store", o,
                             runImport, status);
    import->add_option("FILE", o->file, "The .reg file")->required()->check(CLI::ExistingFile);
    auto* exportCommand = addAction(
        *settings, "export", "Export the sub-key to a registry export (.reg) file", o, runExport, status);
    exportCommand->add_option("FILE", o->file, "The .reg file to write")->required();
    exportCommand->add_flag("--utf8", o->utf8, "Write UTF-8 instead of the registry editor's UTF-16");
}

} // namespace zebreader::cli
