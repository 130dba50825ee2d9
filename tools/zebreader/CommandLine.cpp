#include "CommandLine.h"

#include "drivers/basRead.h"

#include <algorithm>
#include <cctype>
#include <charconv>
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
    int value = -1;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec == std::errc{} && end == text.data() + text.size()) {
        if (value < 0 || value > 41)
            throw UsageError("model " + text + " is out of range: give a number from 0 to 41");
        return static_cast<zebreader81::zebReaderType>(value);
    }
    const std::string wanted = lower(text);
    for (int t = 0; t <= 41; ++t)
        if (lower(zebreader81::basRead::ReaderTypeName(t)) == wanted)
            return static_cast<zebreader81::zebReaderType>(t);
    throw UsageError("unknown model \"" + text +
                     "\": give a number from 0 to 41 or a display name (see `zebreader models`)");
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

void mapPortForRun(int port, const std::string& path)
{
    ::setenv(("ZEBREADER_COM" + std::to_string(port)).c_str(), path.c_str(), 1);
}

} // namespace zebreader::cli
