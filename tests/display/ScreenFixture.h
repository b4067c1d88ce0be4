#pragma once

#include "../links/FakeSerialPort.h"
#include "../links/ScriptedFtdi.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "VirtualTimers.h"
#include "core/AppHome.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "display/Form1.h"
#include "links/UsbLink.h"

#include <QStringList>
#include <memory>

namespace stellwyn::displaytest {

// A new installation in a temporary home, set for one commtype, with the main screen built on
// the links' test doubles and timers that tick on a virtual clock.
struct ScreenFixture {
    // rows: ScaleCFG of svdata.mdb, as linkstest::scaleRows reads them ("RS485/130 ...").
    // sccfgRows: the same for sccfg.mdb, the serial network's list.
    explicit ScreenFixture(const QString& commtype, const QString& rows = {},
                           const QString& sccfgRows = {});

    // A fresh Form1, as a new pick of "Activate Remote Screen" makes; the last one goes.
    display::Form1& newForm(links::FtdiApi* ftdiOverride = nullptr);
    // A form the caller owns, its timers on the virtual clock or, for a frame's host that
    // destroys forms as it likes, Qt's own.
    std::unique_ptr<display::Form1> makeForm(links::FtdiApi* ftdiOverride, bool virtualTimers);
    display::Form1& form() { return *form_; }
    core::Form1Controls& f() { return form_->controls(); }
    // The serial port of the form last made.
    linkstest::FakeSerialPort& port() { return *port_; }
    QByteArray adapterBytes() { return ftdi.written.value(m.usbhandle); }
    // ScaleCFG of svdata.mdb: "sctype/serial" for each row, in ID order.
    QStringList scaleCfgRows() const;

    testsupport::TempHome home;
    core::AppHome appHome{home.path()};
    core::VirtualClock clock;
    core::Module1 m;
    testsupport::RecordingDialogs dialogs;
    linkstest::ScriptedFtdi ftdi;
    links::UsbLink usb{m, ftdi, dialogs};
    QSet<int> missingPorts;
    // What the screen put on the frame's status bar, in order.
    QStringList statuses;
    // Declared before the timers, so that they go first and never tick a form that has gone.
    std::unique_ptr<display::Form1> form_;
    std::unique_ptr<links::UsbLink> usbOverride_;
    // Made afresh with each form; runFor moves the clock and ticks the form's timers.
    std::unique_ptr<testsupport::VirtualTimers> timers;

private:
    linkstest::FakeSerialPort* port_ = nullptr;
};

// Sets fields of the syscfg row of a home's svdata.mdb.
void setSysCfg(const QString& home, const QString& field, const QVariant& value);

} // namespace stellwyn::displaytest
