#pragma once

#include <QList>
#include <QString>

namespace stellwyn::core {

// One serial device the system offers for a port.
struct SerialDevice {
    QString path;
    // The USB product as its maker names it; empty for a built-in port.
    QString description;
};

// Where the system shows its serial devices; tests point these at a folder of their own.
struct SerialDeviceRoots {
    QString byId = QStringLiteral("/dev/serial/by-id");
    QString dev = QStringLiteral("/dev");
    QString sysClassTty = QStringLiteral("/sys/class/tty");
};

// The serial devices to offer: first the stable names under by-id, in name order, each with
// the USB description its device gives; then each ttyS port that has a UART behind it (the
// kernel makes ttyS0 to ttyS31 whether or not there is one), in number order.
QList<SerialDevice> serialDevices(const SerialDeviceRoots& roots = {});

} // namespace stellwyn::core
