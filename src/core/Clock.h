#pragma once

#include <QDateTime>
#include <functional>
#include <memory>
#include <vector>

class QTimer;

namespace stellwyn::core {

// The one source of time. Every timed wait of the program reads the time of day in seconds
// from here, for its midnight guard, and measures its length on the monotonic reading, so that
// a wall clock set back (daylight saving, a time server's step, an operator) never stretches a
// wait. Tests run the long waits and the midnight guard on a virtual clock.
class Clock {
public:
    virtual ~Clock() = default;

    // Seconds since midnight, with fractions; falls back to 0 when the day turns.
    virtual double timeOfDay() const = 0;
    // Seconds from an arbitrary start that only ever go forward, whatever the wall clock does.
    virtual double monotonic() const = 0;
    // Local date and time, for stored readings.
    virtual QDateTime now() const = 0;
    // Blocks for the given seconds without running any event.
    virtual void sleep(double seconds) = 0;
    // The yield of a wait: runs pending events, and when there are none lets the event loop
    // sleep until the next one arrives or at most `seconds` have passed. Never spins.
    virtual void waitForEvents(double seconds) = 0;
};

class RealClock final : public Clock {
public:
    RealClock();
    ~RealClock() override;
    RealClock(const RealClock&) = delete;
    RealClock& operator=(const RealClock&) = delete;

    double timeOfDay() const override;
    double monotonic() const override;
    QDateTime now() const override;
    void sleep(double seconds) override;
    void waitForEvents(double seconds) override;

private:
    std::unique_ptr<QTimer> bound_;
    mutable bool zoneRead_ = false;
    mutable double zoneReadAt_ = 0.0;
};

// Time that moves only when told to, or when something sleeps or waits on it. The wall clock
// can be set apart from the monotonic one, as an operator would set the system's clock.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(QDateTime start = QDateTime(QDate(2026, 1, 5), QTime(12, 0)));

    double timeOfDay() const override;
    double monotonic() const override { return elapsed_; }
    QDateTime now() const override { return now_; }
    void sleep(double seconds) override { advance(seconds); }
    // Runs pending events, then moves time on by one step of at most a millisecond, so that
    // anything scheduled on this clock becomes due in order.
    void waitForEvents(double seconds) override;

    // Moves both clocks on. No event runs here: whatever falls due waits for the next yield.
    void advance(double seconds);
    // Sets the wall clock only; the monotonic reading goes on as it was.
    void setNow(const QDateTime& when) { now_ = when; }
    // Total seconds advanced by sleeps and advances since construction.
    double elapsed() const { return elapsed_; }

    // Called after every move of time, inside whatever moved it (a sleep included), so a test
    // can act in the middle of a wait that does not yield. Returns a key for removal.
    int addAdvanceListener(std::function<void()> listener);
    void removeAdvanceListener(int key);

private:
    std::vector<std::pair<int, std::function<void()>>> listeners_;
    int nextKey_ = 0;
    QDateTime now_;
    double elapsed_ = 0.0;
};

} // namespace stellwyn::core
