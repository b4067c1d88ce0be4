#pragma once

#include <QString>

namespace stellwyn::core {
class Clock;
class Module1;
class SettingsStore;
} // namespace stellwyn::core

namespace stellwyn::display {

class Form1;

// The link of the main screen as the status bar tells it.
struct LinkState {
    QString commtype;
    bool open = false;
    // The device or address the link uses; empty when none is known.
    QString device;
    int errors = 0;

    // "USB485 open on /dev/ttyUSB0, 0 errors since start".
    QString text() const;
};

// The link of `form`, or with no form (none yet, or gone) the closed link of the settings.
LinkState linkState(const core::Module1& m, Form1* form, const core::SettingsStore& settings);

// The link, then the rows stored today in the readings file of `dataconn`, in one line: the
// screen's status bar and the collector's log say the same.
QString statusLine(const LinkState& link, const QString& dataconn, const core::Clock& clock);

} // namespace stellwyn::display
