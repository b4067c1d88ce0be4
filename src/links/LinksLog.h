#pragma once

#include <QLoggingCategory>

namespace stellwyn::links {
// Diagnostics of the links: QT_LOGGING_RULES="stellwyn.links.*=false" and the like filter them.
Q_DECLARE_LOGGING_CATEGORY(lcLinks)

// Errors of the devices under the links since the program started (a port that would not
// open, a device that reported a fault), for the status line.
void countLinkError();
int linkErrorsSinceStart();
} // namespace stellwyn::links
