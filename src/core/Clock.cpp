#include "Clock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <thread>

namespace stellwyn::core {

RealClock::RealClock() = default;
RealClock::~RealClock() = default;

double RealClock::timeOfDay() const {
    // Every timed wait reads this, a scan pass twice for each scale. QTime::currentTime() asks
    // the system for the zone file on every call; the zone is read again only once a minute here,
    // which still follows an operator who changes it while the program runs.
    constexpr double zoneReadEvery = 60.0;
    const double mono = monotonic();
    if (!zoneRead_ || mono - zoneReadAt_ >= zoneReadEvery) {
        tzset();
        zoneRead_ = true;
        zoneReadAt_ = mono;
    }
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    tm local{};
    localtime_r(&ts.tv_sec, &local);
    const int ms = static_cast<int>(ts.tv_nsec / 1000000);
    return ((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec) + ms / 1000.0;
}

double RealClock::monotonic() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

QDateTime RealClock::now() const {
    return QDateTime::currentDateTime();
}

void RealClock::sleep(double seconds) {
    if (seconds > 0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }
}

void RealClock::waitForEvents(double seconds) {
    if (QCoreApplication::instance() == nullptr) {
        sleep(std::min(seconds, 0.001));
        return;
    }
    // A caller whose device cannot wake the loop (a driver library that is only asked for its
    // queue) asks for short waits and looks again; the rest are woken as their bytes arrive.
    constexpr int longestSleepMs = 60 * 1000;
    // Rounded up: a wait woken a fraction of a millisecond before its deadline would sleep a
    // whole one more to reach it.
    const int ms = std::clamp(static_cast<int>(std::ceil(seconds * 1000.0)), 1, longestSleepMs);
    // One timer bounds every yield of a wait: a reply wait yields for each few bytes that come
    // in, and a timer made and dropped at each of them cost more than the bytes did. It is set
    // again only when it would ring late, or so early that it would wake the loop for nothing.
    constexpr int earlyEnoughMs = 10;
    if (!bound_) {
        bound_ = std::make_unique<QTimer>();
        bound_->setSingleShot(true);
        bound_->setTimerType(Qt::PreciseTimer);
    }
    const int left = bound_->remainingTime();
    if (left < 0 || left > ms || left < ms - earlyEnoughMs) {
        bound_->start(ms);
    }
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void VirtualClock::waitForEvents(double seconds) {
    if (QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
    }
    advance(std::min(seconds, 0.001));
}

VirtualClock::VirtualClock(QDateTime start) : now_(std::move(start)) {}

double VirtualClock::timeOfDay() const {
    return now_.time().msecsSinceStartOfDay() / 1000.0;
}

void VirtualClock::advance(double seconds) {
    if (seconds <= 0) {
        return;
    }
    // Whole milliseconds, rounded up so that a wait always makes progress: a deadline a hair's
    // breadth away in floating point is still one millisecond of time, never none.
    const auto ms = std::max<qint64>(1, static_cast<qint64>(std::ceil(seconds * 1000.0 - 1e-6)));
    now_ = now_.addMSecs(ms);
    elapsed_ += ms / 1000.0;
    // A copy, so that a listener may remove itself or add another.
    const auto listeners = listeners_;
    for (const auto& entry : listeners) {
        entry.second();
    }
}

int VirtualClock::addAdvanceListener(std::function<void()> listener) {
    listeners_.emplace_back(nextKey_, std::move(listener));
    return nextKey_++;
}

void VirtualClock::removeAdvanceListener(int key) {
    std::erase_if(listeners_, [key](const auto& entry) { return entry.first == key; });
}

} // namespace stellwyn::core
