#include "links/LowLatency.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

namespace stellwyn::links {

bool requestLowLatency(int fd) {
    serial_struct serial{};
    if (ioctl(fd, TIOCGSERIAL, &serial) != 0) {
        return false;
    }
    serial.flags |= ASYNC_LOW_LATENCY;
    return ioctl(fd, TIOCSSERIAL, &serial) == 0;
}

} // namespace stellwyn::links
