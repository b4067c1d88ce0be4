#pragma once

#include "links/LineSettings.h"

#include <QByteArray>

namespace stellwyn::links {

enum class TtyFlow { none, rtsCts, xonXoff };

// Puts an open terminal device in raw mode with the given line: any baud rate its driver takes
// (an FTDI adapter takes nearly any, not only the standard ones), 5 to 8 data bits, parity
// N, O, E, M or S, one or two stop bits, and the flow control. False when the driver refuses it
// or the line cannot be expressed (4 data bits, one and a half stop bits).
bool setTtyLine(int fd, const LineSettings& line, TtyFlow flow);

// The line a device had before it was opened, to give it back at close; empty when unknown.
QByteArray saveTtyLine(int fd);
void restoreTtyLine(int fd, const QByteArray& saved);

} // namespace stellwyn::links
