#include "links/KernelChannel.h"

#include "links/LowLatency.h"
#include "links/QtLineSettings.h"

#include <QSerialPortInfo>
#include <cerrno>
#include <unistd.h>

namespace stellwyn::links {

KernelChannel::KernelChannel(const QString& path, const QByteArray& serialNumber,
                             std::function<void(const QString&)> showStatus)
    : path_(path), serialNumber_(serialNumber), presence_(path, std::move(showStatus)) {
    // An adapter pulled from its socket leaves the link silent; the port is let go at the
    // next call, outside the port's own read in which the error is raised.
    gathering_.setSingleShot(true);
    gathering_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&gathering_, &QTimer::timeout, [this] { release(); });
    QObject::connect(&port_, &QSerialPort::errorOccurred, [this](QSerialPort::SerialPortError e) {
        if (e == QSerialPort::ResourceError) {
            lost_ = true;
        }
        if (e != QSerialPort::NoError && e != QSerialPort::TimeoutError) {
            countLinkError();
        }
    });
}

std::unique_ptr<KernelChannel> KernelChannel::open(const QString& path,
                                                   const QByteArray& serialNumber,
                                                   std::function<void(const QString&)> showStatus) {
    std::unique_ptr<KernelChannel> channel(
        new KernelChannel(path, serialNumber, std::move(showStatus)));
    channel->port_.setPortName(path);
    if (!channel->port_.open(QIODevice::ReadWrite)) {
        return nullptr;
    }
    // The adapter starts at the line the program always asks for; the calls that follow set
    // it again one by one, each able to fail on its own.
    applyLineSettings(channel->port_, channel->line_);
    requestLowLatency(static_cast<int>(channel->port_.handle()));
    return channel;
}

bool KernelChannel::setBaudRate(DWORD baud) {
    if (!usable() || baud == 0 || !port_.setBaudRate(static_cast<qint32>(baud))) {
        return false;
    }
    line_.baud = static_cast<int>(baud);
    return true;
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
    if (!applyLineSettings(port_, settings)) {
        return false;
    }
    line_ = settings;
    return true;
}

bool KernelChannel::setFlowControl(std::uint16_t flowControl) {
    if (!usable()) {
        return false;
    }
    QSerialPort::FlowControl flow = QSerialPort::NoFlowControl;
    switch (flowControl) {
    case FT_FLOW_NONE:
        break;
    case FT_FLOW_RTS_CTS:
        flow = QSerialPort::HardwareControl;
        break;
    case FT_FLOW_XON_XOFF:
        flow = QSerialPort::SoftwareControl;
        break;
    default:
        return false;
    }
    if (!port_.setFlowControl(flow)) {
        return false;
    }
    flow_ = flow;
    return true;
}

void KernelChannel::write(const QByteArray& bytes) {
    if (!usable()) {
        return;
    }
    // A request of a few bytes goes straight to the device when nothing is queued before it:
    // the port's own path arms and disarms a write notifier for each one, and every arming
    // wakes the event loop once more for nothing.
    qint64 sent = 0;
    if (port_.bytesToWrite() == 0) {
        while (sent < bytes.size()) {
            const ssize_t n = ::write(static_cast<int>(port_.handle()), bytes.constData() + sent,
                                      static_cast<size_t>(bytes.size() - sent));
            if (n > 0) {
                sent += n;
            } else if (n < 0 && errno == EINTR) {
                continue;
            } else {
                if (n < 0 && (errno == EIO || errno == ENXIO || errno == ENODEV)) {
                    lost_ = true;
                    return;
                }
                break; // a full line buffer: the port queues the rest
            }
        }
    }
    if (sent < bytes.size()) {
        port_.write(bytes.constData() + sent, bytes.size() - sent);
        port_.flush();
    }
}

void KernelChannel::gather(int bytes) {
    if (bytes <= 0 || gathering_.isActive() || !usable() || line_.baud <= 0) {
        return;
    }
    // A start bit, the data, a parity bit if any and the stop bits, each byte.
    const int bits =
        1 + line_.dataBits + (line_.parity == 'N' ? 0 : 1) + (line_.stopBits >= 2 ? 2 : 1);
    const int ms = (bytes * bits * 1000 + line_.baud - 1) / line_.baud;
    // A port with a full buffer stops listening to the device, which then wakes nobody.
    port_.setReadBufferSize(std::max<qint64>(1, port_.bytesAvailable()));
    gathering_.start(std::max(1, ms));
}

void KernelChannel::release() {
    if (port_.readBufferSize() == 0) {
        return;
    }
    gathering_.stop();
    port_.setReadBufferSize(0);
    takeIn(0);
}

qint64 KernelChannel::waiting() {
    if (!usable() || gathering_.isActive()) {
        return 0;
    }
    // Bytes already taken in are enough of an answer; asking the system again for each of
    // them would cost a call every time the scan looks.
    if (port_.bytesAvailable() == 0) {
        takeIn(0);
    }
    return usable() ? port_.bytesAvailable() : 0;
}

QByteArray KernelChannel::read(qint64 maxSize, int timeoutMs) {
    release();
    QDeadlineTimer deadline(timeoutMs);
    if (usable() && port_.bytesAvailable() < maxSize) {
        takeIn(0);
    }
    while (usable() && port_.bytesAvailable() < maxSize && !deadline.hasExpired()) {
        takeIn(static_cast<int>(deadline.remainingTime()));
    }
    return usable() ? port_.read(maxSize) : QByteArray();
}

qint64 KernelChannel::toWrite() {
    return usable() ? port_.bytesToWrite() : 0;
}

void KernelChannel::purge(bool received, bool toSend) {
    release();
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
        presence_.lost();
    }
    if (presence_.away()) {
        presence_.tryBack([this] { return reopen(); });
    }
    return port_.isOpen();
}

bool KernelChannel::reopen() {
    // The name first (a /dev/serial/by-id link names the same adapter in any socket), then
    // wherever the system now shows the adapter of that serial number; the list of ports is
    // costly to make, so it is made only when the name does not do.
    if (openAt(path_)) {
        return true;
    }
    if (!serialNumber_.isEmpty()) {
        for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts()) {
            if (port.serialNumber().toLatin1() == serialNumber_ && openAt(port.systemLocation())) {
                return true;
            }
        }
    }
    port_.clearError();
    return false;
}

bool KernelChannel::openAt(const QString& place) {
    port_.setPortName(place);
    if (!port_.open(QIODevice::ReadWrite)) {
        return false;
    }
    applyLineSettings(port_, line_);
    port_.setFlowControl(flow_);
    requestLowLatency(static_cast<int>(port_.handle()));
    lost_ = false;
    return true;
}

} // namespace stellwyn::links
