#include "FakeSerialPort.h"

#include "sim/InProcessLink.h"

namespace stellwyn::linkstest {

void FakeSerialPort::CommPort(std::int16_t port) {
    operations << QStringLiteral("CommPort %1").arg(port);
    if (++commPortCalls_ == failCommPortCall) {
        throw links::SerialPortError(QStringLiteral("Invalid port number"));
    }
    port_ = port;
}

void FakeSerialPort::Settings(const QString& settings) {
    operations << QStringLiteral("Settings ") + settings;
}

void FakeSerialPort::InputLen(std::int16_t length) {
    operations << QStringLiteral("InputLen %1").arg(length);
    inputLen_ = length;
}

void FakeSerialPort::PortOpen(bool open) {
    operations << (open ? QStringLiteral("PortOpen true") : QStringLiteral("PortOpen false"));
    if (open && missingPorts.contains(port_)) {
        throw links::SerialPortError(QStringLiteral("Device unavailable"));
    }
    open_ = open;
}

void FakeSerialPort::Output(const QByteArray& bytes) {
    operations << QStringLiteral("Output ") + QString::fromLatin1(bytes.toHex(' '));
    if (!open_) {
        throw links::SerialPortError(QStringLiteral("Operation valid only when the port is open"));
    }
    written.append(bytes);
    if (link_ != nullptr) {
        link_->write(bytes);
    }
}

int FakeSerialPort::InBufferCount() {
    if (link_ != nullptr) {
        received_.append(link_->readAll());
    }
    return static_cast<int>(received_.size());
}

QByteArray FakeSerialPort::Input() {
    InBufferCount();
    const qsizetype n =
        inputLen_ == 0 ? received_.size() : qMin<qsizetype>(inputLen_, received_.size());
    const QByteArray out = received_.left(n);
    received_.remove(0, n);
    return out;
}

} // namespace stellwyn::linkstest
