#pragma once

#include <vector>

namespace stellwyn::core {
class Timer;
class VirtualClock;
} // namespace stellwyn::core

namespace stellwyn::testsupport {

// Ticks the screen's timers on the virtual clock, with the real driver's rules: a timer ticks
// only while enabled with an interval above 0, one interval after it was armed or last ticked,
// and never again while its own handler is still running. Ticks happen whenever the clock
// moves, so a handler that waits on the clock lets the other timers run, as a yield would.
class VirtualTimers {
public:
    explicit VirtualTimers(core::VirtualClock& clock);
    ~VirtualTimers();
    VirtualTimers(const VirtualTimers&) = delete;
    VirtualTimers& operator=(const VirtualTimers&) = delete;

    void drive(core::Timer& timer);
    // Moves the clock on by `seconds` in steps of a millisecond.
    void runFor(double seconds);

private:
    struct Driven {
        core::Timer* state;
        bool armed = false;
        double due = 0;
        int interval = 0;
        bool inHandler = false;
    };
    void follow(Driven& d);
    void fireDue();

    core::VirtualClock& clock_;
    std::vector<Driven*> driven_;
};

} // namespace stellwyn::testsupport
