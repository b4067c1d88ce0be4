#include "links/LinksLog.h"

#include <atomic>

namespace stellwyn::links {
Q_LOGGING_CATEGORY(lcSerial, "stellwyn.link.serial", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFtdi, "stellwyn.link.ftdi", QtInfoMsg)
Q_LOGGING_CATEGORY(lcSocket, "stellwyn.link.socket", QtInfoMsg)

namespace {
// Devices report on the event loop's thread, the status line reads there too; atomic all the
// same, as the USB event thread exists.
std::atomic<int> linkErrors{0};
} // namespace

void countLinkError() {
    ++linkErrors;
}

int linkErrorsSinceStart() {
    return linkErrors.load();
}
} // namespace stellwyn::links
