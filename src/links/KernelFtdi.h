#pragma once

#include "links/ChannelFtdi.h"

#include <QString>
#include <functional>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

// FTDI adapters as the system's own driver shows them: serial devices. Device i is the i-th
// entry of the device list, taken afresh at each call as adapters come and go.
class KernelFtdi final : public ChannelFtdi {
public:
    // showStatus hears of an adapter that went and came back.
    explicit KernelFtdi(const core::SettingsStore& settings,
                        std::function<void(const QString&)> showStatus = {});

    // The system's driver is watched by the event loop through the serial port.
    bool wakesEventLoop() const override { return true; }

protected:
    QList<FtdiDeviceInfo> devices() override;
    std::unique_ptr<FtdiChannel> openChannel(int index) override;

private:
    const core::SettingsStore& settings_;
    std::function<void(const QString&)> showStatus_;
};

} // namespace stellwyn::links
