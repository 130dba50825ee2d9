// Line settings onto a POSIX terminal: kept apart because <asm/termbits.h>, which the
// arbitrary-rate interface needs, clashes with <termios.h>.
#pragma once

#include "channel/SerialBackend.h"

namespace zebreader81::posix {

/// Puts the terminal `fd` in raw mode with `settings` and `handshaking` in one step, then reads
/// the state back. What the device cannot do or quietly changed raises 8015 and leaves the
/// previous state in place.
void applyLine(int fd, const LineSettings& settings, int handshaking);

} // namespace zebreader81::posix
