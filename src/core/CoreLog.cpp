#include "core/CoreLog.h"

namespace stellwyn::core {
Q_LOGGING_CATEGORY(lcCore, "stellwyn.core", QtInfoMsg)
} // namespace stellwyn::core
