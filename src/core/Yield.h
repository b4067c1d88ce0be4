#pragma once

namespace stellwyn::core {

// The one yield to the event loop. A timer tick or a click may run inside it, so a caller must
// leave the shared state usable before calling it.
void yieldToEvents();

// Call before the application object is made: the event loop is Qt's own poll loop rather than
// GLib's. A scan yields some forty times a pass and wakes a dozen, and GLib's loop spends about
// twice the instructions of Qt's on each, for sources this program does not have. A
// QT_NO_GLIB already set by the user is left as it is.
void usePlainEventLoop();

} // namespace stellwyn::core
