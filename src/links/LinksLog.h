#pragma once

#include <QLoggingCategory>

namespace stellwyn::links {
// Diagnostics of the links, one category for each kind of link. Their debug lines carry every
// frame sent and received as hex, off unless asked for: QT_LOGGING_RULES="stellwyn.link.*=true".
Q_DECLARE_LOGGING_CATEGORY(lcSerial)
Q_DECLARE_LOGGING_CATEGORY(lcFtdi)
Q_DECLARE_LOGGING_CATEGORY(lcSocket)

// Errors of the devices under the links since the program started (a port that would not
// open, a device that reported a fault), for the status line.
void countLinkError();
int linkErrorsSinceStart();
} // namespace stellwyn::links
