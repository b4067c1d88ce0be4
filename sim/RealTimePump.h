#pragma once

#include "LineDevice.h"
#include "core/Clock.h"

#include <QObject>
#include <QTimer>
#include <deque>
#include <utility>

namespace stellwyn::sim {

// Runs a device on real time for the transports that face other processes: bytes that come
// in are handed over when their wire time has passed (at once when the line is not paced), and
// what the device sends is emitted when it is due, by a timer set to the next event.
class RealTimePump : public QObject {
    Q_OBJECT
public:
    RealTimePump(LineDevice& device, const core::Clock& clock, QObject* parent = nullptr);

    void feed(const QByteArray& bytes);
    // The time each received byte takes on the wire before the device sees it; 0 for none.
    void setByteTime(double seconds) { byteTime_ = seconds; }
    // Catches up with the clock; call once after setting up the device.
    void run();

signals:
    void output(const QByteArray& bytes);

private:
    LineDevice& device_;
    const core::Clock& clock_;
    QTimer timer_;
    double byteTime_ = 0.0;
    // Received bytes still on their way, with the time each has fully arrived.
    std::deque<std::pair<double, char>> incoming_;
    double lineFree_ = 0.0;
};

} // namespace stellwyn::sim
