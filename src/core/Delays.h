#pragma once

namespace stellwyn::core {

class Clock;

// Whether a wait that would run past second 86398 of the day first holds until the time of day
// has turned over midnight (reads 80000 or less). Every timed wait has this guard but a few
// that never had it.
enum class MidnightGuard { Hold, None };

// The end of one timed wait. Its start keeps the time-of-day midnight guard; its length is
// measured on the monotonic clock, so a wall clock set back never stretches the wait and one
// set forward never cuts it short.
class Deadline {
public:
    Deadline(Clock& clock, double seconds, MidnightGuard guard = MidnightGuard::Hold);

    // The full length has run.
    bool reached() const;
    // Strictly more than the length has run, as the reply waits read their limit.
    bool passed() const;
    // Seconds to the end, 0 once reached.
    double remaining() const;

private:
    Clock& clock_;
    double end_;
};

// Waits the given seconds without yielding: no timer tick or receive event runs meanwhile.
void pause(Clock& clock, double seconds);

// Waits 0.4 seconds without yielding. The configuration transfers rely on nothing else
// running meanwhile.
void shortdelay(Clock& clock);

} // namespace stellwyn::core
