#pragma once

#include <QLoggingCategory>

namespace stellwyn::sdmemory {
Q_DECLARE_LOGGING_CATEGORY(sdmemoryLog)
}
