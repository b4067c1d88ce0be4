#pragma once

#include "core/Clock.h"

namespace stellwyn::sim {

// One byte of 9600 baud, 8 data bits, no parity, one stop bit: ten bit times.
inline constexpr double kByteTime9600 = 10.0 / 9600.0;

// Everything on the simulated line is timed in seconds on one monotonic scale. The time of day
// of the clock wraps at midnight, so the simulator reads the full date and time instead.
inline double lineSeconds(const core::Clock& clock) {
    return static_cast<double>(clock.now().toMSecsSinceEpoch()) / 1000.0;
}

// The virtual clock moves in whole milliseconds, so byte times computed in doubles are
// compared with a little slack.
inline constexpr double kTimeSlack = 1e-6;

} // namespace stellwyn::sim
