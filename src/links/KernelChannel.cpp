#include "links/KernelChannel.h"

#include "links/LowLatency.h"
#include "links/QtLineSettings.h"

#include <QDeadlineTimer>

namespace stellwyn::links {

KernelChannel::KernelChannel() {
    // An adapter pulled from its socket leaves the link silent; the port is let go at the
    // next call, outside the port's own read in which the error is raised.
    QObject::connect(&port_, &QSerialPort::errorOccurred, [this](QSerialPort::SerialPortError e) {
        if (e == QSerialPort::ResourceError) {
            lost_ = true;
        }
    });
}

std::unique_ptr<KernelChannel> KernelChannel::open(const QString& path) {
    std::unique_ptr<KernelChannel> channel(new KernelChannel());
    channel->port_.setPortName(path);
    if (!channel->port_.open(QIODevice::ReadWrite)) {
        return nullptr;
    }
    // The adapter starts at the line the program always asks for; the calls that follow set
    // it again one by one, each able to fail on its own.
    applyLineSettings(channel->port_, LineSettings{});
    requestLowLatency(static_cast<int>(channel->port_.handle()));
    return channel;
}

bool KernelChannel::setBaudRate(DWORD baud) {
    return usable() && baud > 0 && port_.setBaudRate(static_cast<qint32>(baud));
}

bool KernelChannel::setFraming(int dataBits, int stopBits, char parity) {
    if (!usable()) {
        return false;
    }
    LineSettings settings;
    settings.baud = port_.baudRate();
    settings.dataBits = dataBits;
    settings.stopBits = stopBits;
    settings.parity = parity;
    return applyLineSettings(port_, settings);
}

bool KernelChannel::setFlowControl(std::uint16_t flowControl) {
    if (!usable()) {
        return false;
    }
    switch (flowControl) {
    case FT_FLOW_NONE:
        return port_.setFlowControl(QSerialPort::NoFlowControl);
    case FT_FLOW_RTS_CTS:
        return port_.setFlowControl(QSerialPort::HardwareControl);
    case FT_FLOW_XON_XOFF:
        return port_.setFlowControl(QSerialPort::SoftwareControl);
    default:
        return false;
    }
}

void KernelChannel::write(const QByteArray& bytes) {
    if (!usable()) {
        return;
    }
    port_.write(bytes);
    port_.flush();
}

qint64 KernelChannel::waiting() {
    takeIn(0);
    return usable() ? port_.bytesAvailable() : 0;
}

QByteArray KernelChannel::read(qint64 maxSize, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    takeIn(0);
    while (usable() && port_.bytesAvailable() < maxSize && !deadline.hasExpired()) {
        takeIn(static_cast<int>(deadline.remainingTime()));
    }
    return usable() ? port_.read(maxSize) : QByteArray();
}

qint64 KernelChannel::toWrite() {
    return usable() ? port_.bytesToWrite() : 0;
}

void KernelChannel::purge(bool received, bool toSend) {
    if (!usable()) {
        return;
    }
    takeIn(0);
    if (received) {
        port_.clear(QSerialPort::Input);
        port_.readAll();
    }
    if (toSend) {
        port_.clear(QSerialPort::Output);
    }
}

DWORD KernelChannel::modemStatus() {
    if (!usable()) {
        return 0;
    }
    const QSerialPort::PinoutSignals pins = port_.pinoutSignals();
    port_.clearError();
    DWORD status = 0;
    status |= pins.testFlag(QSerialPort::ClearToSendSignal) ? FT_MODEM_CTS : 0;
    status |= pins.testFlag(QSerialPort::DataSetReadySignal) ? FT_MODEM_DSR : 0;
    status |= pins.testFlag(QSerialPort::RingIndicatorSignal) ? FT_MODEM_RI : 0;
    status |= pins.testFlag(QSerialPort::DataCarrierDetectSignal) ? FT_MODEM_DCD : 0;
    return status;
}

void KernelChannel::takeIn(int timeoutMs) {
    if (!usable()) {
        return;
    }
    port_.waitForReadyRead(timeoutMs);
    if (!lost_) {
        // Nothing having come within the wait is no error of the device.
        port_.clearError();
    }
}

bool KernelChannel::usable() {
    if (lost_ && port_.isOpen()) {
        port_.close();
    }
    return port_.isOpen();
}

} // namespace stellwyn::links
