#pragma once

#include <QByteArray>
#include <QString>

namespace stellwyn::core {
class Clock;
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {

class FtdiApi;

// The two-digit channel of an "ATHP" command for rfnetid "0" to "6"; empty for anything else,
// so that the command then carries no channel at all.
QByteArray rfChannelDigits(const QString& rfnetid);

// Puts the RF module behind the USB-RS485 adapter into command mode and tunes it to rfnetid,
// once, at the end of each activation. The wait for the module's answer holds the screen still
// for up to 2 seconds without running any event; without an open adapter (usbhandle 0, or no
// driver library at all) nothing arrives and the wait ends in "RF Module Not Responding".
void rf_setup(core::Module1& m, FtdiApi* ftdi, core::Dialogs& dialogs, core::Clock& clock);

} // namespace stellwyn::links
