// The flush and the pace of the waits every basScantron procedure shares.
#pragma once

#include "channel/Waits.h"

#include <chrono>

namespace zebreader81 {
class clsZEBReader;

/// Empties the receive buffer, giving up on a line that never falls quiet; every error is
/// ignored.
void FlushInputST(clsZEBReader& reader);

namespace scanmark {

/// How long one turn of a wait lasts at most: SleepTime, 50 ms when not set. The pace bounds
/// what a reply that slips in just before the turn can cost.
std::chrono::milliseconds pace(const clsZEBReader& reader);
/// The family's waits: paced, and ended by a cancel request.
wait::Turns turns(const clsZEBReader& reader);
/// One turn of a wait: yields until input arrives, the timer runs out, a cancel request or
/// the pace passes.
void waitTurn(clsZEBReader& reader);

} // namespace scanmark
} // namespace zebreader81
