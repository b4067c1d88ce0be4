#include "indicator_config/IndicatorConfigLog.h"

namespace stellwyn::indicator_config {
Q_LOGGING_CATEGORY(lcIndicatorConfig, "stellwyn.indicator_config")
} // namespace stellwyn::indicator_config
