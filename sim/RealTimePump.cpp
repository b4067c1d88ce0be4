#include "RealTimePump.h"

#include "WireTime.h"

#include <cmath>

namespace stellwyn::sim {

RealTimePump::RealTimePump(LineDevice& device, const core::Clock& clock, QObject* parent)
    : QObject(parent), device_(device), clock_(clock) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &RealTimePump::run);
}

void RealTimePump::feed(const QByteArray& bytes) {
    device_.receive(bytes, lineSeconds(clock_));
    run();
}

void RealTimePump::run() {
    const double now = lineSeconds(clock_);
    device_.advanceTo(now);
    const QByteArray out = device_.takeDue(now);
    if (!out.isEmpty()) {
        emit output(out);
    }
    if (const auto next = device_.nextEvent()) {
        const double ms = std::ceil(std::max(0.0, *next - lineSeconds(clock_)) * 1000.0);
        timer_.start(static_cast<int>(std::min(ms, 3600.0 * 1000.0)));
    } else {
        timer_.stop();
    }
}

} // namespace stellwyn::sim
