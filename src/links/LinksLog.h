#pragma once

#include <QLoggingCategory>

namespace stellwyn::links {
// Diagnostics of the links, one category for each kind of link. Their debug lines carry every
// frame sent and received as hex, off unless asked for: QT_LOGGING_RULES="stellwyn.link.*=true".
Q_DECLARE_LOGGING_CATEGORY(lcSerial)
Q_DECLARE_LOGGING_CATEGORY(lcFtdi)
Q_DECLARE_LOGGING_CATEGORY(lcSocket)
} // namespace stellwyn::links
