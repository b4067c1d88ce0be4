#pragma once

#include <QLoggingCategory>

namespace stellwyn::indicator_config {
// Diagnostics of the command interface through which other programs drive the indicator setup.
Q_DECLARE_LOGGING_CATEGORY(lcCommand)
} // namespace stellwyn::indicator_config
