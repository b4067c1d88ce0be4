#pragma once

namespace stellwyn::core {

class Clock;

// The time of day at which a timed wait of `seconds` may start. A wait that would run past
// 86398 s first holds until the clock has turned over midnight (reads 80000 or less), so that
// a deadline never lies beyond the wrap of the time of day.
double guardedStart(Clock& clock, double seconds);

// Waits 0.4 seconds without yielding: no timer tick or receive event can run meanwhile.
// The configuration transfers rely on that.
void shortdelay(Clock& clock);

// Waits until the time of day reaches start + seconds, without yielding.
void waitUntil(Clock& clock, double deadline);

} // namespace stellwyn::core
