#pragma once

#include <QLoggingCategory>

namespace stellwyn::indicator_config {
// Diagnostics of the indicator setup and the command interface.
Q_DECLARE_LOGGING_CATEGORY(lcIndicatorConfig)
} // namespace stellwyn::indicator_config
