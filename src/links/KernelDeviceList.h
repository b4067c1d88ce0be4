#pragma once

#include "links/FtdiChannel.h"

#include <QList>
#include <QString>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

struct KernelDevice {
    QString path;
    FtdiDeviceInfo info;
};

// The FTDI adapters that the system's own driver shows as serial devices. USB/Devices, when
// present, lists their paths separated by commas (empty: no device); otherwise every serial
// port whose USB vendor id is FTDI's, in the order of their names.
QList<KernelDevice> kernelDevices(const core::SettingsStore& settings);

// Name order as a person reads it: ttyUSB2 before ttyUSB10.
bool portNameLess(const QString& a, const QString& b);

} // namespace stellwyn::links
