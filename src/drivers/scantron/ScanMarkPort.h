// The waits every basScantron procedure shares on the serial channel.
#pragma once

#include <string>

namespace zebreader81 {
class clsZEBReader;

/// Empties the receive buffer, giving up on a line that never falls quiet; every error is
/// ignored.
void FlushInputST(clsZEBReader& reader);

namespace scanmark {

/// One turn of a wait: yields until input arrives, the timer runs out, a cancel request or
/// SleepTime (50 ms when not set) passes. The pace bounds what a reply that slips in just
/// before the turn can cost.
void waitTurn(clsZEBReader& reader);

enum class FirstByte { Arrived, Cancelled, TimedOut };

/// Arms tmrScan and waits, yielding, until a byte is waiting; a cancel request or the timer
/// ends the wait. The timer is off again when it returns.
FirstByte waitFirstByte(clsZEBReader& reader);

/// Takes every byte waiting, one at a time, without waiting for more.
std::string takeWaiting(clsZEBReader& reader);

} // namespace scanmark
} // namespace zebreader81
