#include "SdMemoryLog.h"

namespace stellwyn::sdmemory {
Q_LOGGING_CATEGORY(sdmemoryLog, "stellwyn.sdmemory", QtInfoMsg)
}
