#pragma once

#include <QLoggingCategory>

namespace stellwyn::core {
// What the data store does. Its info lines, off unless QT_LOGGING_RULES="stellwyn.store.info=true",
// name each reading as it becomes durable, for those who must account for every row.
Q_DECLARE_LOGGING_CATEGORY(lcStore)
} // namespace stellwyn::core
