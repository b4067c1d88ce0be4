#include "PtyServer.h"

#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace stellwyn::sim {

namespace {
QString systemError(const char* what) {
    return QStringLiteral("%1: %2").arg(QLatin1String(what),
                                        QString::fromLocal8Bit(strerror(errno)));
}
} // namespace

PtyServer::PtyServer(LineDevice& device, const core::Clock& clock, QObject* parent)
    : QObject(parent), pump_(device, clock) {
    connect(&pump_, &RealTimePump::output, this, &PtyServer::writeOut);
}

PtyServer::~PtyServer() {
    closeAll();
}

bool PtyServer::open() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (master_ < 0) {
        error_ = systemError("posix_openpt");
        return false;
    }
    if (grantpt(master_) != 0 || unlockpt(master_) != 0) {
        error_ = systemError("grantpt/unlockpt");
        closeAll();
        return false;
    }
    char name[128] = {};
    if (ptsname_r(master_, name, sizeof name) != 0) {
        error_ = systemError("ptsname");
        closeAll();
        return false;
    }
    slavePath_ = QString::fromLocal8Bit(name);
    slave_ = ::open(name, O_RDWR | O_NOCTTY);
    if (slave_ < 0) {
        error_ = systemError("open slave");
        closeAll();
        return false;
    }
    // Raw: no echo, no line editing, no CR/LF translation; bytes pass as on a serial line.
    termios tio{};
    tcgetattr(slave_, &tio);
    cfmakeraw(&tio);
    cfsetispeed(&tio, B9600);
    cfsetospeed(&tio, B9600);
    tcsetattr(slave_, TCSANOW, &tio);

    notifier_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &PtyServer::onReadable);
    pump_.run();
    return true;
}

bool PtyServer::linkAs(const QString& path) {
    QFile::remove(path);
    if (!QFile::link(slavePath_, path)) {
        error_ = QStringLiteral("cannot link %1 to %2").arg(path, slavePath_);
        return false;
    }
    linkPath_ = path;
    return true;
}

void PtyServer::onReadable() {
    char buf[4096];
    const ssize_t n = ::read(master_, buf, sizeof buf);
    if (n > 0) {
        pump_.feed(QByteArray(buf, static_cast<qsizetype>(n)));
    }
}

void PtyServer::writeOut(const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n =
            ::write(master_, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            // Nobody reads and the terminal's buffer is full: the bytes are lost, as on a
            // serial line with no one listening.
            return;
        }
        done += n;
    }
}

void PtyServer::closeAll() {
    notifier_.reset();
    if (!linkPath_.isEmpty()) {
        QFile::remove(linkPath_);
        linkPath_.clear();
    }
    if (slave_ >= 0) {
        ::close(slave_);
        slave_ = -1;
    }
    if (master_ >= 0) {
        ::close(master_);
        master_ = -1;
    }
}

} // namespace stellwyn::sim
