#pragma once

#include <QLoggingCategory>

namespace stellwyn::links {
// Diagnostics of the links: QT_LOGGING_RULES="stellwyn.links.*=false" and the like filter them.
Q_DECLARE_LOGGING_CATEGORY(lcLinks)
} // namespace stellwyn::links
