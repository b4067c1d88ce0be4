#include "links/TtyLine.h"

// The kernel's own termios2, which carries the baud rate as a number; glibc's <termios.h>
// declares a struct of the same name and cannot be included beside it.
#include <asm/termbits.h>
#include <cstring>
#include <sys/ioctl.h>

namespace stellwyn::links {

namespace {

bool framingOf(const LineSettings& line, tcflag_t& cflag) {
    switch (line.dataBits) {
    case 5:
        cflag |= CS5;
        break;
    case 6:
        cflag |= CS6;
        break;
    case 7:
        cflag |= CS7;
        break;
    case 8:
        cflag |= CS8;
        break;
    default:
        return false;
    }
    switch (line.parity) {
    case 'N':
        break;
    case 'E':
        cflag |= PARENB;
        break;
    case 'O':
        cflag |= PARENB | PARODD;
        break;
    case 'M':
        cflag |= PARENB | CMSPAR | PARODD;
        break;
    case 'S':
        cflag |= PARENB | CMSPAR;
        break;
    default:
        return false;
    }
    if (line.stopBits == 2) {
        cflag |= CSTOPB;
    } else if (line.stopBits != 1) {
        return false;
    }
    return true;
}

} // namespace

bool setTtyLine(int fd, const LineSettings& line, TtyFlow flow) {
    if (line.baud <= 0) {
        return false;
    }
    termios2 tio{};
    if (ioctl(fd, TCGETS2, &tio) != 0) {
        return false;
    }
    tcflag_t cflag = CREAD | CLOCAL | BOTHER | (BOTHER << IBSHIFT);
    if (!framingOf(line, cflag)) {
        return false;
    }
    if (flow == TtyFlow::rtsCts) {
        cflag |= CRTSCTS;
    }
    tio.c_cflag = cflag;
    // Raw bytes both ways: no line editing, no signals, no translation of CR or LF. A parity
    // error is dropped rather than marked, as the adapter's own driver does.
    tio.c_iflag = IGNPAR | (flow == TtyFlow::xonXoff ? IXON | IXOFF : 0);
    tio.c_oflag = 0;
    tio.c_lflag = 0;
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    tio.c_ispeed = static_cast<speed_t>(line.baud);
    tio.c_ospeed = static_cast<speed_t>(line.baud);
    return ioctl(fd, TCSETS2, &tio) == 0;
}

QByteArray saveTtyLine(int fd) {
    termios2 tio{};
    if (ioctl(fd, TCGETS2, &tio) != 0) {
        return {};
    }
    return QByteArray(reinterpret_cast<const char*>(&tio), sizeof tio);
}

void restoreTtyLine(int fd, const QByteArray& saved) {
    if (saved.size() != static_cast<qsizetype>(sizeof(termios2))) {
        return;
    }
    termios2 tio{};
    std::memcpy(&tio, saved.constData(), sizeof tio);
    ioctl(fd, TCSETS2, &tio);
}

} // namespace stellwyn::links
