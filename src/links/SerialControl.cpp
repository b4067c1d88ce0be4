#include "links/SerialControl.h"

#include "links/LinksLog.h"

namespace stellwyn::links {

namespace {
// The control's own numbering of ports.
constexpr int kHighestPort = 255;
} // namespace

SerialControl::SerialControl(std::unique_ptr<SerialDevice> device) : device_(std::move(device)) {}

SerialControl::~SerialControl() {
    if (open_) {
        device_->close();
    }
}

void SerialControl::CommPort(std::int16_t port) {
    if (port < 1 || port > kHighestPort) {
        throw SerialPortError(QStringLiteral("Invalid port number %1").arg(port));
    }
    if (open_) {
        throw SerialPortError(QStringLiteral("Port already open"));
    }
    port_ = port;
}

void SerialControl::Settings(const QString& settings) {
    const auto parsed = parseLineSettings(settings);
    if (!parsed) {
        throw SerialPortError(QStringLiteral("Invalid property value: \"%1\"").arg(settings));
    }
    if (open_ && !device_->configure(*parsed)) {
        throw SerialPortError(QStringLiteral("Invalid property value: \"%1\"").arg(settings));
    }
    settings_ = *parsed;
}

void SerialControl::InputLen(std::int16_t length) {
    if (length < 0) {
        throw SerialPortError(QStringLiteral("Invalid property value: %1").arg(length));
    }
    inputLen_ = length;
}

void SerialControl::PortOpen(bool open) {
    if (open == open_) {
        if (open) {
            throw SerialPortError(QStringLiteral("Port already open"));
        }
        return;
    }
    if (!open) {
        device_->close();
        open_ = false;
        return;
    }
    QString error;
    if (!device_->open(port_, error)) {
        throw SerialPortError(
            QStringLiteral("Port COM%1 is not available: %2").arg(port_).arg(error));
    }
    if (!device_->configure(settings_)) {
        device_->close();
        throw SerialPortError(QStringLiteral("Port COM%1 refuses the settings").arg(port_));
    }
    open_ = true;
}

void SerialControl::Output(const QByteArray& bytes) {
    requireOpen();
    // The trace's arguments are worked out only when its category is on.
    qCDebug(lcSerial, "COM%d sent %s", port_, bytes.toHex(' ').constData());
    device_->write(bytes);
}

int SerialControl::InBufferCount() {
    requireOpen();
    return static_cast<int>(device_->bytesWaiting());
}

QByteArray SerialControl::Input() {
    requireOpen();
    const qint64 waiting = device_->bytesWaiting();
    QByteArray bytes = device_->read(inputLen_ == 0 ? waiting : qMin<qint64>(inputLen_, waiting));
    if (!bytes.isEmpty()) {
        qCDebug(lcSerial, "COM%d received %s", port_, bytes.toHex(' ').constData());
    }
    return bytes;
}

void SerialControl::requireOpen() const {
    if (!open_) {
        throw SerialPortError(QStringLiteral("Operation valid only when the port is open"));
    }
}

} // namespace stellwyn::links
