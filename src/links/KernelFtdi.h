#pragma once

#include "links/ChannelFtdi.h"

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

// FTDI adapters as the system's own driver shows them: serial devices. Device i is the i-th
// entry of the device list, taken afresh at each call as adapters come and go.
class KernelFtdi final : public ChannelFtdi {
public:
    explicit KernelFtdi(const core::SettingsStore& settings);

protected:
    QList<FtdiDeviceInfo> devices() override;
    std::unique_ptr<FtdiChannel> openChannel(int index) override;

private:
    const core::SettingsStore& settings_;
};

} // namespace stellwyn::links
