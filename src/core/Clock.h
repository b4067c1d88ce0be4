#pragma once

#include <QDateTime>
#include <functional>

namespace stellwyn::core {

// The one source of time. Every timed wait of the program reads the time of day in seconds
// from here, so that tests can run the long waits and the midnight guard on a virtual clock.
class Clock {
public:
    virtual ~Clock() = default;

    // Seconds since midnight, with fractions; falls back to 0 when the day turns.
    virtual double timeOfDay() const = 0;
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
    double timeOfDay() const override;
    QDateTime now() const override;
    void sleep(double seconds) override;
    void waitForEvents(double seconds) override;
};

// Time that moves only when told to, or when something sleeps on it.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(QDateTime start = QDateTime(QDate(2026, 1, 5), QTime(12, 0)));

    double timeOfDay() const override;
    QDateTime now() const override { return now_; }
    void sleep(double seconds) override { advance(seconds); }
    // Runs pending events, then moves time on by one step of at most a millisecond, so that
    // anything scheduled on this clock becomes due in order.
    void waitForEvents(double seconds) override;

    void advance(double seconds);
    void setNow(const QDateTime& when) { now_ = when; }
    // Total seconds advanced by sleeps and advances since construction.
    double elapsed() const { return elapsed_; }
    // Called after every move of time, so that test timers can fire when they fall due.
    void setAdvanceListener(std::function<void()> listener) { listener_ = std::move(listener); }

private:
    std::function<void()> listener_;
    QDateTime now_;
    double elapsed_ = 0.0;
};

} // namespace stellwyn::core
