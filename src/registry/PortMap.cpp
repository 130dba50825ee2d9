// Placeholder until the settings store lands: no stored map.
#include "registry/PortMap.h"

namespace zebreader81 {

std::optional<std::string> storedPortPath(int) { return std::nullopt; }
bool storePortPath(int, const std::string&) { return false; }

} // namespace zebreader81
