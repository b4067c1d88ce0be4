#include "links/KernelChannel.h"

#include "links/LinksLog.h"
#include "links/LowLatency.h"

#include <QDeadlineTimer>
#include <QSerialPortInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace stellwyn::links {

namespace {
// Requests are a few bytes; a line held by its flow control for good must not make them pile
// up without end.
constexpr qsizetype pendingCap = 64 * 1024;

bool deviceGone(int err) {
    return err == EIO || err == ENXIO || err == ENODEV || err == EBADF;
}
} // namespace

KernelChannel::KernelChannel(const QString& path, const QByteArray& serialNumber,
                             std::function<void(const QString&)> showStatus)
    : path_(path), serialNumber_(serialNumber), presence_(path, std::move(showStatus)) {
    gathering_.setSingleShot(true);
    gathering_.setTimerType(Qt::PreciseTimer);
}

KernelChannel::~KernelChannel() {
    closeDevice();
}

std::unique_ptr<KernelChannel> KernelChannel::open(const QString& path,
                                                   const QByteArray& serialNumber,
                                                   std::function<void(const QString&)> showStatus) {
    std::unique_ptr<KernelChannel> channel(
        new KernelChannel(path, serialNumber, std::move(showStatus)));
    if (!channel->openAt(path)) {
        return nullptr;
    }
    return channel;
}

bool KernelChannel::openAt(const QString& place) {
    const int fd =
        ::open(place.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    // One holder at a time, another program included: the exclusive mode keeps out other users,
    // the lock keeps out another holder of ours whoever it runs as.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    ::ioctl(fd, TIOCEXCL);
    fd_ = fd;
    savedLine_ = saveTtyLine(fd);
    // The adapter gets the line the program asked for last (at first, the one it always asks
    // for); the calls that follow set it again one by one, each able to fail on its own.
    setTtyLine(fd, line_, flow_);
    requestLowLatency(fd);
    readable_ = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, [this] {
        readable_->setEnabled(false);
        woke_ = true;
    });
    writable_ = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Write);
    writable_->setEnabled(false);
    QObject::connect(writable_.get(), &QSocketNotifier::activated, [this] { sendPending(); });
    lost_ = false;
    woke_ = false;
    return true;
}

void KernelChannel::closeDevice() {
    gathering_.stop();
    readable_.reset();
    writable_.reset();
    pending_.clear();
    if (fd_ >= 0) {
        restoreTtyLine(fd_, savedLine_);
        ::ioctl(fd_, TIOCNXCL);
        ::close(fd_);
        fd_ = -1;
    }
}

void KernelChannel::failed(int err) {
    countLinkError();
    if (deviceGone(err)) {
        lost_ = true;
    } else {
        qCInfo(lcFtdi, "%s: %s", qPrintable(path_), strerror(err));
    }
}

bool KernelChannel::setBaudRate(DWORD baud) {
    if (!usable() || baud == 0 || baud > 0x7fffffff) {
        return false;
    }
    LineSettings next = line_;
    next.baud = static_cast<int>(baud);
    if (!setTtyLine(fd_, next, flow_)) {
        return false;
    }
    line_ = next;
    return true;
}

bool KernelChannel::setFraming(int dataBits, int stopBits, char parity) {
    if (!usable()) {
        return false;
    }
    LineSettings next = line_;
    next.dataBits = dataBits;
    next.stopBits = stopBits;
    next.parity = parity;
    if (!setTtyLine(fd_, next, flow_)) {
        return false;
    }
    line_ = next;
    return true;
}

bool KernelChannel::setFlowControl(std::uint16_t flowControl) {
    if (!usable()) {
        return false;
    }
    TtyFlow flow = TtyFlow::none;
    switch (flowControl) {
    case FT_FLOW_NONE:
        break;
    case FT_FLOW_RTS_CTS:
        flow = TtyFlow::rtsCts;
        break;
    case FT_FLOW_XON_XOFF:
        flow = TtyFlow::xonXoff;
        break;
    default:
        return false;
    }
    if (!setTtyLine(fd_, line_, flow)) {
        return false;
    }
    flow_ = flow;
    return true;
}

void KernelChannel::write(const QByteArray& bytes) {
    if (!usable()) {
        return;
    }
    // What the driver will not take yet waits here and is sent on as the device can take it,
    // in order, before anything written later; a request mostly goes straight through.
    if (pending_.size() + bytes.size() > pendingCap) {
        countLinkError();
        qCWarning(lcFtdi, "%s: the device takes nothing; %lld bytes not sent", qPrintable(path_),
                  static_cast<long long>(bytes.size()));
        return;
    }
    pending_.append(bytes);
    sendPending();
}

void KernelChannel::sendPending() {
    while (!pending_.isEmpty()) {
        const ssize_t n = ::write(fd_, pending_.constData(), static_cast<size_t>(pending_.size()));
        if (n > 0) {
            pending_.remove(0, n);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && errno != EAGAIN) {
            failed(errno);
            pending_.clear();
            break;
        } else {
            writable_->setEnabled(true);
            return;
        }
    }
    writable_->setEnabled(false);
}

void KernelChannel::gather(int bytes) {
    if (bytes <= 0 || gathering_.isActive() || !usable() || line_.baud <= 0) {
        return;
    }
    // A start bit, the data, a parity bit if any and the stop bits, each byte.
    const int bits =
        1 + line_.dataBits + (line_.parity == 'N' ? 0 : 1) + (line_.stopBits >= 2 ? 2 : 1);
    const int ms = (bytes * bits * 1000 + line_.baud - 1) / line_.baud;
    readable_->setEnabled(false);
    gathering_.start(std::max(1, ms));
}

void KernelChannel::release() {
    gathering_.stop();
}

void KernelChannel::watchForInput() {
    if (readable_ && !gathering_.isActive()) {
        woke_ = false;
        readable_->setEnabled(true);
    }
}

qint64 KernelChannel::waiting() {
    if (!usable() || gathering_.isActive()) {
        return 0;
    }
    int n = 0;
    if (::ioctl(fd_, FIONREAD, &n) != 0) {
        failed(errno);
        return 0;
    }
    if (n > 0) {
        return n;
    }
    // Woken for input, and there is none: the device hung up (a pulled adapter, the far end of
    // a pseudo-terminal closed), which wakes every wait from now on.
    if (woke_) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, 0) == 1 && (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
            failed(EIO);
            return 0;
        }
    }
    watchForInput();
    return 0;
}

QByteArray KernelChannel::read(qint64 maxSize, int timeoutMs) {
    release();
    QByteArray out;
    if (maxSize <= 0 || !usable()) {
        return out;
    }
    out.resize(maxSize);
    qint64 got = 0;
    const QDeadlineTimer deadline(timeoutMs);
    while (got < maxSize) {
        const ssize_t n = ::read(fd_, out.data() + got, static_cast<size_t>(maxSize - got));
        if (n > 0) {
            got += n;
            continue;
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0 && errno != EAGAIN) {
            failed(errno);
            break;
        }
        const qint64 left = deadline.remainingTime();
        if (left == 0) {
            break;
        }
        pollfd p{fd_, POLLIN, 0};
        const int r = ::poll(&p, 1, left < 0 ? -1 : static_cast<int>(left));
        if (r < 0 && errno == EINTR) {
            continue;
        }
        if (r <= 0) {
            break;
        }
        if ((p.revents & POLLIN) == 0) {
            failed(EIO);
            break;
        }
    }
    out.truncate(got);
    watchForInput();
    return out;
}

qint64 KernelChannel::toWrite() {
    if (!usable()) {
        return 0;
    }
    int queued = 0;
    if (::ioctl(fd_, TIOCOUTQ, &queued) != 0) {
        queued = 0;
    }
    return pending_.size() + queued;
}

void KernelChannel::purge(bool received, bool toSend) {
    release();
    if (!usable()) {
        return;
    }
    if (received) {
        ::tcflush(fd_, TCIFLUSH);
    }
    if (toSend) {
        ::tcflush(fd_, TCOFLUSH);
        pending_.clear();
        writable_->setEnabled(false);
    }
}

DWORD KernelChannel::modemStatus() {
    int pins = 0;
    if (!usable() || ::ioctl(fd_, TIOCMGET, &pins) != 0) {
        return 0;
    }
    DWORD status = 0;
    status |= (pins & TIOCM_CTS) != 0 ? FT_MODEM_CTS : 0;
    status |= (pins & TIOCM_DSR) != 0 ? FT_MODEM_DSR : 0;
    status |= (pins & TIOCM_RI) != 0 ? FT_MODEM_RI : 0;
    status |= (pins & TIOCM_CD) != 0 ? FT_MODEM_DCD : 0;
    return status;
}

bool KernelChannel::usable() {
    if (lost_ && fd_ >= 0) {
        closeDevice();
        presence_.lost();
    }
    if (presence_.away()) {
        presence_.tryBack([this] { return reopen(); });
    }
    return fd_ >= 0;
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
    return false;
}

} // namespace stellwyn::links
