#include "links/KernelDeviceList.h"

#include "core/SettingsStore.h"
#include "links/ByteText.h"
#include "links/ListSetting.h"

#include <QFileInfo>
#include <QSerialPortInfo>
#include <algorithm>

namespace stellwyn::links {

namespace {

constexpr quint16 kFtdiVendorId = 0x0403;

FtdiDeviceInfo infoOf(const QSerialPortInfo& port) {
    return FtdiDeviceInfo{bytesOf(port.serialNumber()), bytesOf(port.description())};
}

// The system's USB descriptors of the device at path, when it knows any. Links such as
// /dev/serial/by-id/... are followed to the device they name.
FtdiDeviceInfo infoOfPath(const QString& path, const QList<QSerialPortInfo>& ports) {
    const QString canonical = QFileInfo(path).canonicalFilePath();
    for (const QSerialPortInfo& port : ports) {
        const QString location = port.systemLocation();
        if (location == path || (!canonical.isEmpty() && location == canonical)) {
            return infoOf(port);
        }
    }
    return {};
}

// A name cut into its text and its trailing number.
std::pair<QString, qlonglong> splitNumber(const QString& name) {
    qsizetype digits = name.size();
    while (digits > 0 && name.at(digits - 1).isDigit()) {
        --digits;
    }
    const QString number = name.mid(digits);
    return {name.left(digits), number.isEmpty() ? -1 : number.toLongLong()};
}

} // namespace

bool portNameLess(const QString& a, const QString& b) {
    const auto [textA, numberA] = splitNumber(a);
    const auto [textB, numberB] = splitNumber(b);
    if (textA != textB) {
        return textA < textB;
    }
    if (numberA != numberB) {
        return numberA < numberB;
    }
    return a < b;
}

QList<KernelDevice> kernelDevices(const core::SettingsStore& settings) {
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    QList<KernelDevice> devices;
    const QString section = QStringLiteral("USB");
    const QString key = QStringLiteral("Devices");
    if (settings.contains(section, key)) {
        for (const QString& path : commaListSetting(settings, section, key)) {
            devices << KernelDevice{path, infoOfPath(path, ports)};
        }
        return devices;
    }
    for (const QSerialPortInfo& port : ports) {
        if (port.hasVendorIdentifier() && port.vendorIdentifier() == kFtdiVendorId) {
            devices << KernelDevice{port.systemLocation(), infoOf(port)};
        }
    }
    std::sort(devices.begin(), devices.end(), [](const KernelDevice& a, const KernelDevice& b) {
        return portNameLess(QFileInfo(a.path).fileName(), QFileInfo(b.path).fileName());
    });
    return devices;
}

} // namespace stellwyn::links
