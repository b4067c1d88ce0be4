#include "links/KernelFtdi.h"

#include "links/KernelChannel.h"
#include "links/KernelDeviceList.h"

namespace stellwyn::links {

KernelFtdi::KernelFtdi(const core::SettingsStore& settings,
                       std::function<void(const QString&)> showStatus)
    : settings_(settings), showStatus_(std::move(showStatus)) {}

QList<FtdiDeviceInfo> KernelFtdi::devices() {
    QList<FtdiDeviceInfo> infos;
    for (const KernelDevice& device : kernelDevices(settings_)) {
        infos << device.info;
    }
    return infos;
}

std::unique_ptr<FtdiChannel> KernelFtdi::openChannel(int index) {
    const QList<KernelDevice> list = kernelDevices(settings_);
    if (index < 0 || index >= list.size()) {
        return nullptr;
    }
    const KernelDevice& device = list.at(index);
    return KernelChannel::open(device.path, device.info.serialNumber, showStatus_);
}

} // namespace stellwyn::links
