#pragma once

#include "links/LineSettings.h"

#include <QSerialPort>

namespace stellwyn::links {

// Puts a framing on an open Qt port, without flow control. False when the port refuses any
// part of it.
bool applyLineSettings(QSerialPort& port, const LineSettings& settings);

} // namespace stellwyn::links
