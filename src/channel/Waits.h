// The waits drivers use on the serial form. Each family passes its own numbers at the call.
#pragma once

#include <chrono>

namespace zebreader81 {

class SerialControl;

namespace wait {

/// Takes and drops everything waiting until the line is quiet or `limit` passes (a line
/// that never falls quiet is given up on). Every error is ignored.
void drain(SerialControl& com, std::chrono::milliseconds limit);

} // namespace wait
} // namespace zebreader81
