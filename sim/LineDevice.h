#pragma once

#include <QByteArray>
#include <optional>

namespace stellwyn::sim {

// Whatever sits at the far end of a line: bytes go in at a time, bytes come out when due.
// Transports drive it; it never reads a clock of its own, so the same device runs on the
// virtual clock in tests and on the real one in stellwyn-sim.
class LineDevice {
public:
    virtual ~LineDevice() = default;

    // Bytes from the host that have fully arrived at time `at`.
    virtual void receive(const QByteArray& bytes, double at) = 0;
    // Runs what the device does on its own (scheduled prints, weight changes) up to t.
    virtual void advanceTo(double t) = 0;
    // Bytes that have left the device by `now`.
    virtual QByteArray takeDue(double now) = 0;
    // When something next happens: a byte leaves or a scheduled action runs.
    virtual std::optional<double> nextEvent() const = 0;
    // The host's purge: a reply under way is thrown away.
    virtual void discardOutput() = 0;
};

} // namespace stellwyn::sim
