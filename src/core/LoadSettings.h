#pragma once

namespace stellwyn::core {

class Module1;

// Copies the first syscfg row into the shared state. Traps nothing: a missing file, table or
// field, an empty syscfg, or a value that will not convert is the fatal error.
void loadsettings(Module1& m);

} // namespace stellwyn::core
