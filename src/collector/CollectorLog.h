#pragma once

#include <QString>

namespace stellwyn::collector {

// One line of the log, "what: text", flushed at once: under a service manager standard error
// is the journal, and a line must be there before the process may be killed.
void logLine(const QString& what, const QString& text);

// The program's own logging categories write "category: text"; the toolkit's notes only when
// they are warnings or worse. Readings stored are on by default, one line each.
void installLogHandler();

// Sends standard error to the end of this file from here on. False, with errno, when it cannot
// be opened.
bool logToFile(const QString& path);

} // namespace stellwyn::collector
