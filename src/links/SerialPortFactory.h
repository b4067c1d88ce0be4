#pragma once

#include "links/SerialPort.h"

#include <memory>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

// MSComm1 on a serial device of the system, port n being the device the settings store names
// for COMn. The one place that picks the real backend, so no link code names it.
std::unique_ptr<SerialPort> makeSerialPort(const core::SettingsStore& settings);

} // namespace stellwyn::links
