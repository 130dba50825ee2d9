// The waits drivers use on the serial form, so that a driver reads as send and expect. Each
// family passes its own numbers (pace, interval, limits) at the call. Every wait either is
// bounded by tmrScan or a limit, or ends on CancelScan; none spins.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace zebreader81 {

class frmComm;
class SerialControl;

namespace wait {

enum class Outcome { Arrived, TimedOut, Cancelled };

/// How a wait turns: `pace` bounds one turn (none: until input, the timer or a wake);
/// `cancel` also ends the wait on CancelScan; `watchdog` says tmrScan already runs over a
/// longer transfer, so the wait neither arms it nor turns it off.
struct Turns {
    std::optional<std::chrono::milliseconds> pace;
    bool cancel = false;
    bool watchdog = false;
};

/// Arms tmrScan (a running timer goes on) and turns until `count` bytes are buffered;
/// TimedOut once the timer ran out with fewer. tmrScan is off again when it returns.
Outcome awaitBytes(frmComm& fc, int16_t count, const Turns& turns = {});
/// Turns until a byte is buffered, however long that takes; False on CancelScan.
bool awaitByteUntilCancel(frmComm& fc, const Turns& turns = {});
/// True when a byte is buffered now or after one turn of at most `grace`.
bool byteWithin(frmComm& fc, std::chrono::milliseconds grace);
/// One turn: returns on new input, the timer running out, a wake, or after `pace`.
void turn(frmComm& fc, std::optional<std::chrono::milliseconds> pace);
/// A fixed pause the protocol demands, then the count of bytes waiting.
int16_t waitingAfter(SerialControl& com, int64_t pauseMs);

/// One byte from the receive buffer, without waiting; nothing when none is there.
std::optional<unsigned char> takeByte(SerialControl& com);
/// Every byte waiting, taken one at a time, without waiting for more.
std::string takeWaiting(SerialControl& com);
/// Takes and drops everything waiting until the line is quiet or `limit` passes (a line
/// that never falls quiet is given up on); a quiet line also has the transport purge what it
/// still holds (a network server's buffer). Every error is ignored.
void drain(SerialControl& com, std::chrono::milliseconds limit);

} // namespace wait
} // namespace zebreader81
