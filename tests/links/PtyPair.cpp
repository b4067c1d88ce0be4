#include "PtyPair.h"

#include <QDeadlineTimer>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace stellwyn::linkstest {

PtyPair::PtyPair() {
    const int fd = posix_openpt(O_RDWR | O_NOCTTY);
    if (fd < 0) {
        return;
    }
    if (grantpt(fd) != 0 || unlockpt(fd) != 0) {
        ::close(fd);
        return;
    }
    // The master passes bytes untouched both ways, as a wire does.
    termios raw{};
    if (tcgetattr(fd, &raw) == 0) {
        cfmakeraw(&raw);
        tcsetattr(fd, TCSANOW, &raw);
    }
    master_ = fd;
    slavePath_ = QString::fromLocal8Bit(ptsname(fd));
}

PtyPair::~PtyPair() {
    hangUp();
}

void PtyPair::send(const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n =
            ::write(master_, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (n <= 0) {
            return;
        }
        done += n;
    }
}

QByteArray PtyPair::receive(qsizetype count, int timeoutMs) {
    QByteArray bytes;
    QDeadlineTimer deadline(timeoutMs);
    while (bytes.size() < count && !deadline.hasExpired()) {
        pollfd p{master_, POLLIN, 0};
        if (poll(&p, 1, static_cast<int>(deadline.remainingTime())) <= 0) {
            break;
        }
        char buffer[512];
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) {
            break;
        }
        bytes.append(buffer, n);
    }
    return bytes;
}

void PtyPair::hangUp() {
    if (master_ >= 0) {
        ::close(master_);
        master_ = -1;
    }
}

QByteArray allByteValues() {
    QByteArray bytes;
    for (int b = 0; b < 256; ++b) {
        bytes.append(static_cast<char>(b));
    }
    return bytes;
}

} // namespace stellwyn::linkstest
