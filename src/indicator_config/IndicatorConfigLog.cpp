#include "indicator_config/IndicatorConfigLog.h"

namespace stellwyn::indicator_config {
Q_LOGGING_CATEGORY(lcCommand, "stellwyn.command", QtInfoMsg)
} // namespace stellwyn::indicator_config
