#include "Clock.h"

#include <chrono>
#include <thread>

namespace stellwyn::core {

double RealClock::timeOfDay() const {
    const QTime t = QTime::currentTime();
    return t.msecsSinceStartOfDay() / 1000.0;
}

QDateTime RealClock::now() const { return QDateTime::currentDateTime(); }

void RealClock::sleep(double seconds) {
    if (seconds > 0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }
}

VirtualClock::VirtualClock(QDateTime start) : now_(std::move(start)) {}

double VirtualClock::timeOfDay() const { return now_.time().msecsSinceStartOfDay() / 1000.0; }

void VirtualClock::advance(double seconds) {
    if (seconds <= 0) {
        return;
    }
    // Whole milliseconds, rounded up so that a wait always makes progress.
    const auto ms = static_cast<qint64>(seconds * 1000.0 + 0.999);
    now_ = now_.addMSecs(ms);
    elapsed_ += ms / 1000.0;
}

} // namespace stellwyn::core
