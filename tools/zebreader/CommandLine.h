// What every command of the tool shares: exit statuses, usage errors, and the arguments
// that name a model or a settings root.
#pragma once

#include "zebreader81/enums.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zebreader::cli {

/// Exit statuses.
enum Exit : int { ExitOk = 0, ExitFailed = 1, ExitUsage = 2 };

/// A command line that makes no sense; reported with its message and exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A model given as a number 0..41, a display name (any case) or a simulated family's name;
/// throws UsageError.
zebreader81::zebReaderType parseModel(const std::string& text);
/// A settings root: hkcu (HKEY_CURRENT_USER) or hklm (HKEY_LOCAL_MACHINE); throws UsageError.
zebreader81::zebReaderRegistryKey parseRoot(const std::string& text);

/// Where the tool keeps its settings unless told otherwise.
inline constexpr const char* defaultSettingsKey = "Software\\ZEBReader81\\zebreader";

/// True when the stream is a terminal.
bool stdoutIsTerminal();
bool stderrIsTerminal();

/// The device COM port `port` leads to now: ZEBREADER_COM<port>, the stored map, or the
/// default /dev/ttyS<port-1>.
std::string portPath(int port);

/// Points COM port `port` at `path` for this process.
void mapPortForRun(int port, const std::string& path);

/// A command's registration: adds its subcommand to `app`; the subcommand's callback
/// stores the command's exit status into `status`.
using Registration = void (*)(CLI::App& app, int& status);
void addScanCommand(CLI::App& app, int& status);
void addModelsCommands(CLI::App& app, int& status);
void addDeviceCommands(CLI::App& app, int& status);
void addSettingsCommand(CLI::App& app, int& status);
void addPortsCommand(CLI::App& app, int& status);

} // namespace zebreader::cli
