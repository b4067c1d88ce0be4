#include "RealTimePump.h"

#include "WireTime.h"

#include <algorithm>
#include <cmath>

namespace stellwyn::sim {

RealTimePump::RealTimePump(LineDevice& device, const core::Clock& clock, QObject* parent)
    : QObject(parent), device_(device), clock_(clock) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &RealTimePump::run);
}

void RealTimePump::feed(const QByteArray& bytes) {
    const double now = lineSeconds(clock_);
    if (byteTime_ <= 0.0 && incoming_.empty()) {
        device_.receive(bytes, now);
    } else {
        double t = std::max(now, lineFree_);
        for (const char b : bytes) {
            t += byteTime_;
            incoming_.emplace_back(t, b);
        }
        lineFree_ = t;
    }
    run();
}

void RealTimePump::run() {
    const double now = lineSeconds(clock_);
    while (!incoming_.empty() && incoming_.front().first <= now + kTimeSlack) {
        // Bytes that land together go in together, so a frame is seen at its last byte.
        const double t = incoming_.front().first;
        QByteArray chunk;
        while (!incoming_.empty() && incoming_.front().first <= t + kTimeSlack) {
            chunk.append(incoming_.front().second);
            incoming_.pop_front();
        }
        device_.receive(chunk, t);
    }
    device_.advanceTo(now);
    const QByteArray out = device_.takeDue(now);
    if (!out.isEmpty()) {
        emit output(out);
    }
    std::optional<double> next = device_.nextEvent();
    if (!incoming_.empty() && (!next || incoming_.front().first < *next)) {
        next = incoming_.front().first;
    }
    if (next) {
        const double ms = std::ceil(std::max(0.0, *next - lineSeconds(clock_)) * 1000.0);
        timer_.start(static_cast<int>(std::min(ms, 3600.0 * 1000.0)));
    } else {
        timer_.stop();
    }
}

} // namespace stellwyn::sim
