#include "links/LinksLog.h"

namespace stellwyn::links {
Q_LOGGING_CATEGORY(lcSerial, "stellwyn.link.serial", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFtdi, "stellwyn.link.ftdi", QtInfoMsg)
Q_LOGGING_CATEGORY(lcSocket, "stellwyn.link.socket", QtInfoMsg)
} // namespace stellwyn::links
