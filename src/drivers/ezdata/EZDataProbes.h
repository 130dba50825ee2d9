// Port probe and firmware query: the models that answer them speak the EZData protocol.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {

class clsZEBReader;

/// Opens `port` with the reader's line settings and asks for a scanner; True when the
/// answer is exactly "G" CR. The port is closed again; any error means False.
bool LocateNCSEZ(clsZEBReader& reader, int16_t& port);
/// Opens the reader's port and asks for the firmware text (what precedes the first "G" CR,
/// trimmed of blanks). The port is closed again; any error means False.
bool FirmwareNCSEZ(clsZEBReader& reader, std::string& text);

} // namespace zebreader81
