#include "Delays.h"

#include "Clock.h"

#include <algorithm>

namespace stellwyn::core {

namespace {
constexpr double lastSafeSecond = 86398.0;
constexpr double afterMidnight = 80000.0;
constexpr double secondsPerDay = 86400.0;
} // namespace

double guardedStart(Clock& clock, double seconds) {
    double start = clock.timeOfDay();
    if (start + seconds > lastSafeSecond) {
        // Sleep to just past midnight rather than spin; re-read in case the sleep came short.
        while (clock.timeOfDay() > afterMidnight) {
            clock.sleep(std::max(0.001, secondsPerDay - clock.timeOfDay() + 0.001));
        }
        start = clock.timeOfDay();
    }
    return start;
}

void waitUntil(Clock& clock, double deadline) {
    while (true) {
        const double now = clock.timeOfDay();
        if (now >= deadline) {
            return;
        }
        clock.sleep(deadline - now);
    }
}

void shortdelay(Clock& clock) {
    constexpr double wait = 0.4;
    const double start = guardedStart(clock, wait);
    waitUntil(clock, start + wait);
}

} // namespace stellwyn::core
