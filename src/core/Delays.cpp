#include "Delays.h"

#include "Clock.h"

#include <algorithm>

namespace stellwyn::core {

namespace {
constexpr double lastSafeSecond = 86398.0;
constexpr double afterMidnight = 80000.0;
constexpr double secondsPerDay = 86400.0;
constexpr double shortestSleep = 0.001;

// Holds until the time of day has passed midnight when a wait of `seconds` started now would
// run across it. The hold never lasts longer than midnight was away when it began, so a clock
// set back meanwhile does not keep it waiting for the hour it was set back by.
void holdPastMidnight(Clock& clock, double seconds) {
    const double start = clock.timeOfDay();
    if (start + seconds <= lastSafeSecond) {
        return;
    }
    const double latest = clock.monotonic() + (secondsPerDay - start) + shortestSleep;
    while (clock.timeOfDay() > afterMidnight && clock.monotonic() < latest) {
        const double toMidnight = secondsPerDay - clock.timeOfDay() + shortestSleep;
        clock.sleep(std::max(shortestSleep, std::min(toMidnight, latest - clock.monotonic())));
    }
}
} // namespace

Deadline::Deadline(Clock& clock, double seconds, MidnightGuard guard) : clock_(clock) {
    if (guard == MidnightGuard::Hold) {
        holdPastMidnight(clock, seconds);
    }
    end_ = clock.monotonic() + seconds;
}

bool Deadline::reached() const {
    return clock_.monotonic() >= end_;
}

bool Deadline::passed() const {
    return clock_.monotonic() > end_;
}

double Deadline::remaining() const {
    return std::max(0.0, end_ - clock_.monotonic());
}

void pause(Clock& clock, double seconds) {
    const Deadline deadline(clock, seconds);
    while (!deadline.reached()) {
        clock.sleep(deadline.remaining());
    }
}

void shortdelay(Clock& clock) {
    constexpr double wait = 0.4;
    pause(clock, wait);
}

} // namespace stellwyn::core
