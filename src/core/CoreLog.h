#pragma once

#include <QLoggingCategory>

namespace stellwyn::core {
// Diagnostics of the program's own files and settings.
Q_DECLARE_LOGGING_CATEGORY(lcCore)
} // namespace stellwyn::core
