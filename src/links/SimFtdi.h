#pragma once

#include "links/ChannelFtdi.h"
#include "sim/Bus.h"

#include <QList>
#include <QStringList>

namespace stellwyn::core {
class Clock;
}

namespace stellwyn::links {

// One simulated USB-RS485 adapter, device 0, with a network of simulated indicators behind it:
// the demonstration link, and the in-process bus of the tests.
class SimFtdi final : public ChannelFtdi {
public:
    SimFtdi(const QList<int>& netIds, core::Clock& clock);

    sim::Bus& bus() { return bus_; }

protected:
    QList<FtdiDeviceInfo> devices() override;
    std::unique_ptr<FtdiChannel> openChannel(int index) override;

private:
    core::Clock& clock_;
    sim::Bus bus_;
};

// The NetIDs among the entries; entries that are not numbers are passed over.
QList<int> simNetIds(const QStringList& entries);

} // namespace stellwyn::links
