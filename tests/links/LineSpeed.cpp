#include "PtyPair.h"

// The kernel's termios2 carries the rate as a number; glibc's <termios.h> cannot stand beside it.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace stellwyn::linkstest {

LineSpeed lineSpeed(int fd) {
    termios2 tio{};
    if (ioctl(fd, TCGETS2, &tio) != 0) {
        return {};
    }
    return {tio.c_ispeed, tio.c_ospeed};
}

} // namespace stellwyn::linkstest
