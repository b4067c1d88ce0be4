#pragma once

#include <QDateTime>

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
};

class RealClock final : public Clock {
public:
    double timeOfDay() const override;
    QDateTime now() const override;
    void sleep(double seconds) override;
};

// Time that moves only when told to, or when something sleeps on it.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(QDateTime start = QDateTime(QDate(2026, 1, 5), QTime(12, 0)));

    double timeOfDay() const override;
    QDateTime now() const override { return now_; }
    void sleep(double seconds) override { advance(seconds); }

    void advance(double seconds);
    void setNow(const QDateTime& when) { now_ = when; }
    // Total seconds advanced by sleeps and advances since construction.
    double elapsed() const { return elapsed_; }

private:
    QDateTime now_;
    double elapsed_ = 0.0;
};

} // namespace stellwyn::core
