#include "ModelName.h"

#include "profiles/ModelTable.h"
#include "sim/Simulators.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace zebreader::cli {

namespace {

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

} // namespace

std::optional<int32_t> modelFromName(const std::string& text, std::string& problem)
{
    int value = -1;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec == std::errc{} && end == text.data() + text.size()) {
        if (value >= 0 && value <= 41)
            return value;
        problem = "model " + text + " is out of range: give a number from 0 to 41";
        return std::nullopt;
    }
    const std::string wanted = lower(text);
    for (int32_t t = 0; t <= 41; ++t)
        if (lower(zebreader81::modelInfo(t)->displayName) == wanted)
            return t;
    for (const auto& f : zebreader81::sim::simulatedFamilies())
        if (wanted == f.name)
            return f.defaultReaderType;
    problem = "unknown model \"" + text + "\": give " + modelSyntax + " (see `zebreader models`)";
    return std::nullopt;
}

} // namespace zebreader::cli
