#pragma once

#include <QStringList>

namespace stellwyn::app {

// Replaces this process with the collector program installed beside it, so that
// `stellwyn --headless` is the collector itself (same process id for a service manager, and
// no toolkit with windows ever loaded). Returns only when the exec failed, with the exit status
// to end with; the reason is on standard error.
int execCollector(const QStringList& arguments);

} // namespace stellwyn::app
