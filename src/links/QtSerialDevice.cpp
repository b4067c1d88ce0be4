#include "links/QtSerialDevice.h"

#include "core/SettingsStore.h"
#include "links/LinksLog.h"
#include "links/QtLineSettings.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace stellwyn::links {

namespace {

// Why the device will not open, in words that lead to the remedy. Qt reports a device that
// another program holds (its lock file, or an exclusive open) as a permission error, just as it
// does a real denial; the device's own permissions tell the two apart.
QString whyNotOpen(const QSerialPort& port, const QString& path) {
    const QString reason = port.errorString();
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("%1 does not exist (%2)").arg(path, reason);
    case QSerialPort::PermissionError:
        if (::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK | W_OK, AT_EACCESS) !=
                0 &&
            errno == EACCES) {
            return QStringLiteral("%1 may not be opened by this user (%2). Serial devices are for "
                                  "members of the group dialout: sudo usermod -aG dialout $USER, "
                                  "then log out and in again.")
                .arg(path, reason);
        }
        return QStringLiteral("%1 is in use by another program (%2)").arg(path, reason);
    default:
        return QStringLiteral("%1: %2").arg(path, reason);
    }
}

} // namespace

QtSerialDevice::QtSerialDevice(const core::SettingsStore& settings) : settings_(settings) {
    // A device that goes away (a pulled USB adapter, a closed pseudo-terminal) must leave the
    // screen silent, not end it. The port is let go at our next call rather than here, since
    // the error may be raised from inside one of the port's own reads.
    QObject::connect(&port_, &QSerialPort::errorOccurred, [this](QSerialPort::SerialPortError e) {
        if (e == QSerialPort::ResourceError) {
            lost_ = true;
        }
        if (e != QSerialPort::NoError && e != QSerialPort::TimeoutError) {
            countLinkError();
        }
    });
}

bool QtSerialDevice::open(int port, QString& error) {
    lost_ = false;
    const QString path = settings_.serialDevicePath(port);
    port_.setPortName(path);
    if (!port_.open(QIODevice::ReadWrite)) {
        error = whyNotOpen(port_, path);
        return false;
    }
    return true;
}

void QtSerialDevice::close() {
    if (port_.isOpen()) {
        port_.close();
    }
}

bool QtSerialDevice::configure(const LineSettings& settings) {
    if (!port_.isOpen()) {
        return !lost_;
    }
    return applyLineSettings(port_, settings);
}

void QtSerialDevice::write(const QByteArray& bytes) {
    dropLostDevice();
    if (!port_.isOpen()) {
        return;
    }
    port_.write(bytes);
    // Hands the bytes to the system now: a send returns at once, and must not wait for the
    // event loop to come round.
    port_.flush();
}

qint64 QtSerialDevice::bytesWaiting() {
    dropLostDevice();
    if (!port_.isOpen()) {
        return 0;
    }
    // Takes in whatever the system holds without waiting, so the count is right even when no
    // event has run since the bytes came.
    port_.waitForReadyRead(0);
    dropLostDevice();
    if (!lost_) {
        // Finding nothing waiting is no error of ours.
        port_.clearError();
    }
    return port_.isOpen() ? port_.bytesAvailable() : 0;
}

QByteArray QtSerialDevice::read(qint64 maxSize) {
    dropLostDevice();
    if (!port_.isOpen() || maxSize <= 0) {
        return {};
    }
    return port_.read(maxSize);
}

void QtSerialDevice::dropLostDevice() {
    if (lost_ && port_.isOpen()) {
        port_.close();
    }
}

} // namespace stellwyn::links
