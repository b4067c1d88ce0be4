#pragma once

#include "links/FtdiChannel.h"
#include "sim/InProcessLink.h"

namespace stellwyn::core {
class Clock;
}

namespace stellwyn::links {

// The adapter's line to a simulated bus in this process. Waiting is done on the clock, so on
// a virtual clock a timed read takes no real time.
class SimChannel final : public FtdiChannel {
public:
    SimChannel(sim::LineDevice& device, core::Clock& clock);

    bool setBaudRate(DWORD baud) override;
    bool setFraming(int dataBits, int stopBits, char parity) override;
    bool setFlowControl(std::uint16_t flowControl) override;
    void write(const QByteArray& bytes) override;
    qint64 waiting() override;
    QByteArray read(qint64 maxSize, int timeoutMs) override;
    qint64 toWrite() override;
    void purge(bool received, bool toSend) override;
    DWORD modemStatus() override;

private:
    core::Clock& clock_;
    sim::InProcessLink link_;
};

} // namespace stellwyn::links
