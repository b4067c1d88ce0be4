#include "core/store/StoreLog.h"

namespace stellwyn::core {
Q_LOGGING_CATEGORY(lcStore, "stellwyn.store", QtWarningMsg)
} // namespace stellwyn::core
