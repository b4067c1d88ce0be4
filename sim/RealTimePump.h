#pragma once

#include "LineDevice.h"
#include "core/Clock.h"

#include <QObject>
#include <QTimer>

namespace stellwyn::sim {

// Runs a device on real time for the transports that face other processes: bytes that come
// in are handed over at once, and what the device sends is emitted when it is due, by a timer
// set to the device's next event.
class RealTimePump : public QObject {
    Q_OBJECT
public:
    RealTimePump(LineDevice& device, const core::Clock& clock, QObject* parent = nullptr);

    void feed(const QByteArray& bytes);
    // Catches up with the clock; call once after setting up the device.
    void run();

signals:
    void output(const QByteArray& bytes);

private:
    LineDevice& device_;
    const core::Clock& clock_;
    QTimer timer_;
};

} // namespace stellwyn::sim
