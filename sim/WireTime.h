#pragma once

#include "core/Clock.h"

namespace stellwyn::sim {

// One byte of 9600 baud, 8 data bits, no parity, one stop bit: ten bit times.
inline constexpr double kByteTime9600 = 10.0 / 9600.0;

// Everything on the simulated line is timed in seconds on one monotonic scale: the clock's
// monotonic reading (the system's steady clock, or a test's virtual time), never the wall
// clock, which a time server or an operator may set back in the middle of a frame.
inline double lineSeconds(const core::Clock& clock) {
    return clock.monotonic();
}

// The virtual clock moves in whole milliseconds, so byte times computed in doubles are
// compared with a little slack.
inline constexpr double kTimeSlack = 1e-6;

} // namespace stellwyn::sim
