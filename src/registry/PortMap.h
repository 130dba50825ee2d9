// The stored map from COM port numbers to device paths.
#pragma once

#include <optional>
#include <string>

namespace zebreader81 {

/// The device path stored for COM port `port`, if any.
std::optional<std::string> storedPortPath(int port);
/// Stores (or, with an empty path, removes) the device path of COM port `port`.
bool storePortPath(int port, const std::string& path);

} // namespace zebreader81
