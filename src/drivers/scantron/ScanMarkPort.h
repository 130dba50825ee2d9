// The waits every basScantron procedure shares on the serial channel.
#pragma once

#include <string>

namespace zebreader81 {
class clsZEBReader;

namespace scanmark {

enum class FirstByte { Arrived, Cancelled, TimedOut };

/// Arms tmrScan and waits, yielding, until a byte is waiting; a cancel request or the timer
/// ends the wait. The timer is off again when it returns.
FirstByte waitFirstByte(clsZEBReader& reader);

/// Takes every byte waiting, one at a time, without waiting for more.
std::string takeWaiting(clsZEBReader& reader);

} // namespace scanmark
} // namespace zebreader81
