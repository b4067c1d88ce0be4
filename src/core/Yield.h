#pragma once

namespace stellwyn::core {

// The one yield to the event loop. A timer tick or a click may run inside it, so a caller must
// leave the shared state usable before calling it.
void yieldToEvents();

} // namespace stellwyn::core
