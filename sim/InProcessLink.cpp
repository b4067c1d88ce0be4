#include "InProcessLink.h"

#include "WireTime.h"

#include <algorithm>

namespace stellwyn::sim {

InProcessLink::InProcessLink(LineDevice& device, const core::Clock& clock)
    : device_(device), clock_(clock) {}

qint64 InProcessLink::write(const QByteArray& data) {
    pump();
    const double now = lineSeconds(clock_);
    if (byteTime_ <= 0.0 && toDevice_.empty()) {
        device_.receive(data, now);
        pump();
        return data.size();
    }
    double t = std::max(now, lineFree_);
    for (char b : data) {
        t += byteTime_;
        toDevice_.emplace_back(t, b);
    }
    lineFree_ = t;
    pump();
    return data.size();
}

void InProcessLink::pump() {
    const double now = lineSeconds(clock_);
    while (!toDevice_.empty() && toDevice_.front().first <= now + kTimeSlack) {
        // Bytes that land together go in together, so a frame is seen at its last byte.
        const double t = toDevice_.front().first;
        QByteArray chunk;
        while (!toDevice_.empty() && toDevice_.front().first <= t + kTimeSlack) {
            chunk.append(toDevice_.front().second);
            toDevice_.pop_front();
        }
        device_.receive(chunk, t);
    }
    device_.advanceTo(now);
    received_.append(device_.takeDue(now));
}

qint64 InProcessLink::bytesAvailable() {
    pump();
    return received_.size();
}

QByteArray InProcessLink::read(qint64 maxSize) {
    pump();
    QByteArray out = received_.left(maxSize);
    received_.remove(0, out.size());
    return out;
}

QByteArray InProcessLink::readAll() {
    return read(bytesAvailable());
}

qint64 InProcessLink::bytesToWrite() {
    pump();
    return static_cast<qint64>(toDevice_.size());
}

void InProcessLink::clearReceived() {
    pump();
    received_.clear();
}

void InProcessLink::clearToWrite() {
    pump();
    toDevice_.clear();
    lineFree_ = lineSeconds(clock_);
}

std::optional<double> InProcessLink::secondsToNextEvent() {
    pump();
    const double now = lineSeconds(clock_);
    std::optional<double> next = device_.nextEvent();
    if (!toDevice_.empty() && (!next || toDevice_.front().first < *next)) {
        next = toDevice_.front().first;
    }
    if (!next) {
        return std::nullopt;
    }
    return std::max(0.0, *next - now);
}

} // namespace stellwyn::sim
