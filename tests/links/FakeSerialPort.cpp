#include "FakeSerialPort.h"

#include "sim/InProcessLink.h"

namespace stellwyn::linkstest {

bool FakeSerialDevice::open(int port, QString& error) {
    error = QStringLiteral("no such device");
    return !missingPorts.contains(port);
}

void FakeSerialDevice::write(const QByteArray& bytes) {
    written.append(bytes);
    if (line != nullptr) {
        line->write(bytes);
    }
}

qint64 FakeSerialDevice::bytesWaiting() {
    if (line != nullptr) {
        received.append(line->readAll());
    }
    return received.size();
}

QByteArray FakeSerialDevice::read(qint64 maxSize) {
    const QByteArray out = received.left(maxSize);
    received.remove(0, out.size());
    return out;
}

FakeSerialPort::FakeSerialPort(std::unique_ptr<FakeSerialDevice> device)
    : written(device->written), missingPorts(device->missingPorts), device_(*device),
      control_(std::move(device)) {}

void FakeSerialPort::CommPort(std::int16_t port) {
    operations << QStringLiteral("CommPort %1").arg(port);
    control_.CommPort(port);
}

void FakeSerialPort::Settings(const QString& settings) {
    operations << QStringLiteral("Settings ") + settings;
    control_.Settings(settings);
}

void FakeSerialPort::InputLen(std::int16_t length) {
    operations << QStringLiteral("InputLen %1").arg(length);
    control_.InputLen(length);
}

void FakeSerialPort::PortOpen(bool open) {
    operations << (open ? QStringLiteral("PortOpen true") : QStringLiteral("PortOpen false"));
    control_.PortOpen(open);
}

void FakeSerialPort::Output(const QByteArray& bytes) {
    operations << QStringLiteral("Output ") + QString::fromLatin1(bytes.toHex(' '));
    control_.Output(bytes);
}

} // namespace stellwyn::linkstest
