// Lines inside this process: a port whose path is memory://<name> opens what was registered
// under that name instead of a device, the way socket:// opens a network port. A scanner
// simulator run in the reader's own thread offers its end of the line this way.
#pragma once

#include "channel/SerialBackend.h"

#include <functional>
#include <memory>
#include <string>

namespace zebreader81 {

using LineOpener = std::function<std::unique_ptr<SerialBackend>(const LineSettings&, int handshaking)>;

/// True for a memory:// path.
bool isMemoryLine(const std::string& path);
/// Makes memory://<name> open through `open`; an empty opener takes the name away again.
void registerMemoryLine(const std::string& name, LineOpener open);
/// Opens a memory:// path; 8002 when nothing is registered under its name.
std::unique_ptr<SerialBackend> openMemoryLine(const std::string& path, const LineSettings& settings,
                                              int handshaking);

} // namespace zebreader81
