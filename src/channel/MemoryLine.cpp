#include "channel/MemoryLine.h"

#include "core/basError.h"

#include <map>
#include <mutex>

namespace zebreader81 {

namespace {

constexpr std::string_view scheme = "memory://";

struct Lines {
    std::mutex mutex;
    std::map<std::string, LineOpener, std::less<>> openers;
};

Lines& lines()
{
    static Lines all;
    return all;
}

} // namespace

bool isMemoryLine(const std::string& path) { return path.rfind(scheme, 0) == 0; }

void registerMemoryLine(const std::string& name, LineOpener open)
{
    auto& all = lines();
    std::lock_guard lock(all.mutex);
    if (open)
        all.openers[name] = std::move(open);
    else
        all.openers.erase(name);
}

std::unique_ptr<SerialBackend> openMemoryLine(const std::string& path, const LineSettings& settings,
                                              int handshaking)
{
    LineOpener open;
    {
        auto& all = lines();
        std::lock_guard lock(all.mutex);
        const auto found = all.openers.find(std::string_view(path).substr(scheme.size()));
        if (found == all.openers.end())
            err::raise(err::InvalidPortNumber);
        open = found->second;
    }
    return open(settings, handshaking);
}

} // namespace zebreader81
