#include "links/SimChannel.h"

#include "core/Clock.h"
#include "sim/WireTime.h"

#include <QDateTime>
#include <algorithm>

namespace stellwyn::links {

namespace {
// The smallest step of a wait, so that an event due "now" that brings no byte cannot hold a
// read in place.
constexpr double kMinimumStep = 0.001;
} // namespace

SimChannel::SimChannel(sim::LineDevice& device, core::Clock& clock)
    : clock_(clock), link_(device, clock) {
    link_.setByteTime(sim::kByteTime9600);
}

bool SimChannel::setBaudRate(DWORD baud) {
    if (baud == 0) {
        return false;
    }
    link_.setByteTime(10.0 / static_cast<double>(baud));
    return true;
}

bool SimChannel::setFraming(int, int, char) {
    return true;
}

bool SimChannel::setFlowControl(std::uint16_t flowControl) {
    return flowControl == FT_FLOW_NONE || flowControl == FT_FLOW_RTS_CTS ||
           flowControl == FT_FLOW_DTR_DSR || flowControl == FT_FLOW_XON_XOFF;
}

void SimChannel::write(const QByteArray& bytes) {
    link_.write(bytes);
}

qint64 SimChannel::waiting() {
    return link_.bytesAvailable();
}

QByteArray SimChannel::read(qint64 maxSize, int timeoutMs) {
    // Whole milliseconds of the clock, so that the wait ends exactly at the timeout.
    const QDateTime deadline = clock_.now().addMSecs(timeoutMs);
    while (link_.bytesAvailable() < maxSize) {
        const double remaining = static_cast<double>(clock_.now().msecsTo(deadline)) / 1000.0;
        if (remaining <= 0.0) {
            break;
        }
        const std::optional<double> next = link_.secondsToNextEvent();
        clock_.sleep(next ? std::min(std::max(*next, kMinimumStep), remaining) : remaining);
    }
    return link_.read(maxSize);
}

qint64 SimChannel::toWrite() {
    return link_.bytesToWrite();
}

void SimChannel::purge(bool received, bool toSend) {
    if (received) {
        link_.clearReceived();
    }
    if (toSend) {
        link_.clearToWrite();
    }
}

// A simulated adapter is always plugged into a powered bus.
DWORD SimChannel::modemStatus() {
    return FT_MODEM_CTS | FT_MODEM_DSR;
}

} // namespace stellwyn::links
