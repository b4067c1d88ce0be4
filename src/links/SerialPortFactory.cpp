#include "links/SerialPortFactory.h"

#include "links/QtSerialDevice.h"
#include "links/SerialControl.h"

namespace stellwyn::links {

std::unique_ptr<SerialPort> makeSerialPort(const core::SettingsStore& settings) {
    return std::make_unique<SerialControl>(std::make_unique<QtSerialDevice>(settings));
}

} // namespace stellwyn::links
