#include "CommandLine.h"

#include "ModelName.h"

#include "registry/PortMap.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <unistd.h>

namespace zebreader::cli {

namespace {

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

} // namespace

zebreader81::zebReaderType parseModel(const std::string& text)
{
    std::string problem;
    const auto type = modelFromName(text, problem);
    if (!type)
        throw UsageError(problem);
    return static_cast<zebreader81::zebReaderType>(*type);
}

zebreader81::zebReaderRegistryKey parseRoot(const std::string& text)
{
    const std::string r = lower(text);
    if (r == "hkcu" || r == "hkey_current_user")
        return zebreader81::zebReaderRegistryKeyCurrentUser;
    if (r == "hklm" || r == "hkey_local_machine")
        return zebreader81::zebReaderRegistryKeyLocalMachine;
    throw UsageError("unknown settings root \"" + text + "\": use hkcu or hklm");
}

bool stdoutIsTerminal() { return ::isatty(STDOUT_FILENO) == 1; }
bool stderrIsTerminal() { return ::isatty(STDERR_FILENO) == 1; }

std::string portPath(int port)
{
    if (const char* env = std::getenv(("ZEBREADER_COM" + std::to_string(port)).c_str()); env && *env)
        return env;
    if (auto stored = zebreader81::storedPortPath(port); stored && !stored->empty())
        return *stored;
    return "/dev/ttyS" + std::to_string(port - 1);
}

void mapPortForRun(int port, const std::string& path)
{
    ::setenv(("ZEBREADER_COM" + std::to_string(port)).c_str(), path.c_str(), 1);
}

} // namespace zebreader::cli
