#include "links/SimFtdi.h"

#include "links/SimChannel.h"
#include "sim/WireTime.h"

namespace stellwyn::links {

SimFtdi::SimFtdi(const QList<int>& netIds, core::Clock& clock)
    : clock_(clock), bus_(sim::Bus::Mode::Addressed) {
    bus_.setByteTime(sim::kByteTime9600);
    for (const int netId : netIds) {
        bus_.add(netId);
    }
}

QList<FtdiDeviceInfo> SimFtdi::devices() {
    return {FtdiDeviceInfo{QByteArrayLiteral("SIM485A"),
                           QByteArrayLiteral("Stellwyn simulated USB-RS485")}};
}

std::unique_ptr<FtdiChannel> SimFtdi::openChannel(int index) {
    if (index != 0) {
        return nullptr;
    }
    return std::make_unique<SimChannel>(bus_, clock_);
}

QList<int> simNetIds(const QStringList& entries) {
    QList<int> netIds;
    for (const QString& entry : entries) {
        bool ok = false;
        const int netId = entry.trimmed().toInt(&ok);
        // A NetID is one byte: a number beyond it would stand for another scale on the wire.
        if (ok && netId >= 0 && netId <= 255) {
            netIds << netId;
        }
    }
    return netIds;
}

} // namespace stellwyn::links
