#pragma once

#include <QObject>
#include <vector>

namespace stellwyn::core {
class Timer;
class VirtualClock;
} // namespace stellwyn::core

namespace stellwyn::testsupport {

// Ticks the screen's timers on the virtual clock, with the real driver's rules: a timer ticks
// only while enabled with an interval above 0, one interval after it was armed or last ticked,
// and never again while its own handler is still running. A tick that falls due is delivered
// through the event loop, so it runs at the next yield, exactly as a real timer's would: never
// inside a wait that does not yield (a sleep, a blocking read), however long that lasts.
class VirtualTimers {
public:
    explicit VirtualTimers(core::VirtualClock& clock);
    ~VirtualTimers();
    VirtualTimers(const VirtualTimers&) = delete;
    VirtualTimers& operator=(const VirtualTimers&) = delete;

    void drive(core::Timer& timer);
    // Moves the clock on by `seconds` in steps of a millisecond, yielding after each.
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
    void scheduleDue();
    void fireDue();

    core::VirtualClock& clock_;
    int listenerKey_;
    // Owns the queued deliveries, so none outlives this object.
    QObject anchor_;
    bool delivery_ = false;
    std::vector<Driven*> driven_;
};

} // namespace stellwyn::testsupport
