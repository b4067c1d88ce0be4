#pragma once

#include "LineDevice.h"
#include "core/Clock.h"

#include <QByteArray>
#include <deque>
#include <optional>

namespace stellwyn::sim {

// The host's end of a line to a simulated device, in the same process and thread. Bytes
// written reach the device after their wire time; replies become readable once they have
// crossed the line. Nothing runs by itself: every call looks at the clock and catches up, so a
// test moves the virtual clock and reads.
class InProcessLink {
public:
    InProcessLink(LineDevice& device, const core::Clock& clock);

    // Host-to-device pacing; 0 hands written bytes over at once.
    void setByteTime(double seconds) { byteTime_ = seconds; }
    double byteTime() const { return byteTime_; }

    qint64 write(const QByteArray& data);
    qint64 bytesAvailable();
    QByteArray read(qint64 maxSize);
    QByteArray readAll();
    // Bytes written that the device has not yet had.
    qint64 bytesToWrite();
    // The purge of a driver: what has arrived is dropped. A reply the device has yet to send
    // still comes, as it would from a real scale.
    void clearReceived();
    // Written bytes not yet on the line are dropped.
    void clearToWrite();
    // Seconds from now until the next byte lands on either side or the device acts; a fake
    // port advances the virtual clock by this much when it must wait.
    std::optional<double> secondsToNextEvent();

    LineDevice& device() { return device_; }

private:
    void pump();

    LineDevice& device_;
    const core::Clock& clock_;
    double byteTime_ = 0.0;
    double lineFree_ = 0.0;
    std::deque<std::pair<double, char>> toDevice_;
    QByteArray received_;
};

} // namespace stellwyn::sim
