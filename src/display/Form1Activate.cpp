// The activation of the main screen: from an idle frame to a running link.
#include "Form1.h"
#include "acquisition/Frames.h"
#include "collection/StoreReading.h"
#include "core/AppHome.h"
#include "core/Conversions.h"
#include "core/Dialogs.h"
#include "core/LoadSettings.h"
#include "core/Module1.h"
#include "core/ScaleAddress.h"
#include "core/SettingsStore.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "core/store/ReadingServer.h"
#include "links/Ethernet.h"
#include "links/RfSetup.h"
#include "links/UsbLink.h"

#include <cmath>

namespace stellwyn::display {

using core::yieldToEvents;

void Form1::Form_Activate() {
    if (s_.m.formactive != core::vbFalse || unloaded_) {
        return;
    }
    activate();
    if (gone()) {
        closeScaleDevices();
    }
    openedScales_.clear();
}

void Form1::activate() {
    core::Module1& m = s_.m;
    Busy busy(*this);
    core::loadsettings(m);
    // Up before the first yield, so that an activation arriving in that yield does nothing.
    m.formactive = core::vbTrue;
    formactivate();
    if (gone()) {
        return;
    }
    placePanes();
    yieldToEvents();
    if (gone()) {
        return;
    }
    m.keypending = 0;
    m.keycode = 0;
    m.keybusy = 0;
    m.networkmode = 0;
    m.timerguard = 0;
    f_.opt_none.setValue(true);

    if (!startLink()) {
        return;
    }
    bindData();
    if (m.scalecount > 0) {
        if (!matchScaleRows()) {
            return;
        }
        fillCombo();
        if (gone()) {
            return;
        }
        seedTimers();
        if (gone()) {
            return;
        }
        setDefaultMode();
        if (gone()) {
            return;
        }
    }
    if (m.rfnet == -1 && !gone()) {
        links::rf_setup(m, s_.ftdi, s_.dialogs, s_.clock);
    }
}

void Form1::placePanes() {
    layout_.netwindow = Form1Layout::netwindowDesign;
    layout_.datawindow = Form1Layout::datawindowDesign;
    f_.netwindowVisible = false;
    f_.datawindowVisible = false;
    const core::Form1Controls design;
    f_.left = design.left;
    f_.top = design.top;
    f_.width = design.width;
    f_.height = design.height;
    layout_.Screen = Form1Layout::screenFace(s_.m.smallfonts);
}

bool Form1::startLink() {
    core::Module1& m = s_.m;
    const QString& t = m.commtype;
    // A USB adapter that is absent or will not open takes the screen away again.
    auto abandon = [this] {
        hide();
        unload();
        return false;
    };
    if (t == u"USB") {
        s_.usb->usb_open();
        if (gone()) {
            return false;
        }
        if (m.usbinitfail == 1) {
            return abandon();
        }
        s_.usb->usb_start();
        if (gone()) {
            // The unload cleared the table before the bus list filled it again.
            m.clearscales();
            return false;
        }
        if (m.usbinitfail == 1) {
            return abandon();
        }
        f_.Timer2.setEnabled(false);
        f_.Timer3.setEnabled(false);
    } else if (t == u"RS232") {
        serialLink_.rs232_start();
        // Slave windows are a network feature.
        f_.Command11.enabled = false;
        f_.btn_saveslave.enabled = false;
        f_.btn_slavesload.enabled = false;
        f_.btn_closeallslaves.enabled = false;
        f_.Frame5.enabled = false;
    } else if (t == u"RS485") {
        f_.Timer2.setEnabled(false);
        f_.Timer3.setEnabled(false);
        serialLink_.rs485_start();
    } else if (t == u"USB485") {
        s_.usb->usb_open();
        if (gone()) {
            return false;
        }
        if (m.usbinitfail == 1) {
            return abandon();
        }
        f_.Timer2.setEnabled(false);
        f_.Timer3.setEnabled(false);
        s_.usb->usb485_start();
        if (gone()) {
            m.clearscales();
            return false;
        }
    } else if (t == u"Ethernet") {
        startEthernet();
    }
    return !gone();
}

// The link is made here, where the polling that follows expects an open socket; its replies
// go to the same parser whatever the mode.
void Form1::startEthernet() {
    const core::SettingsStore settings(s_.home.file(QStringLiteral("stellwyn.ini")));
    ethernet_ =
        std::make_unique<links::Ethernet>(s_.m, s_.dialogs, core::storedScaleAddress(settings));
    ethernet_->parser = [this](const QByteArray& data) { return scanners_.parseweight(data); };
    ethernet_->showStatus = [this](const QString& text) {
        if (calls_.showStatus) {
            calls_.showStatus(text);
        }
    };
    connect(&ethernet_->Winsock1(), &links::Winsock::DataArrival, this,
            [this] { Winsock1_DataArrival(); });
    driveTimer(ethernet_->retryTimer());
    ethernet_->ethernet_connect();
}

void Form1::bindData() {
    f_.data1.ConnectionString = s_.m.cfgconn;
    f_.data1.RecordSource = QStringLiteral("select * from scalecfg");
    f_.data2.ConnectionString = s_.m.readingsconn.isEmpty() ? s_.m.dataconn : s_.m.readingsconn;
    // Only a station whose readings go to a server has other stations' rows to show.
    f_.chk_allstations.visible = core::namesServer(f_.data2.ConnectionString);
    f_.data2.RecordSource = QStringLiteral("select ID,ScaleID,Reading,Date,Time from datacol");
    // Readings left waiting when the program last ended go now, not at the first new one.
    collection::sendWaitingReadings(s_.m);
    grid_.refreshData2();
}

bool Form1::matchScaleRows() {
    core::Module1& m = s_.m;
    m.formactive = core::vbTrue;
    yieldToEvents();
    for (int i = 0; i < m.scalecount; ++i) {
        if (gone() || !matchScaleRow(i)) {
            // A refused device leaves the screen up with what it has; the operator leaves by
            // its exit button.
            return false;
        }
    }
    return true;
}

bool Form1::matchScaleRow(int i) {
    core::Module1& m = s_.m;
    const QString& t = m.commtype;
    // Every yield below may close the screen; its unload clears the table, and a row added
    // after that would be a blank one.
    data1_.Refresh();
    if (data1_.RecordCount() == 0) {
        adddefrec(i);
        if (gone()) {
            return false;
        }
        data1_.Refresh();
    }
    yieldToEvents();
    if (gone()) {
        return false;
    }
    data1_.MoveFirst();
    yieldToEvents();
    if (gone()) {
        return false;
    }
    // On every link but RS-485 the serial number "Unknown" finds the first such row, whichever
    // scale is looked up; nothing below reads that row on those links.
    const bool found =
        t == u"RS485" ? data1_.FindNetId(m.netid[i]) : data1_.FindSerialNo(m.scaleserial[i]);
    if (!found) {
        adddefrec(i);
        if (gone()) {
            return false;
        }
        data1_.MoveLast();
    }
    const core::ScaleCfgRow& row = data1_.row();
    const QString idField = QStringLiteral("ID");
    if (t == u"RS232") {
        m.scaleid[i] = core::toInt32(row.id, idField);
        m.scaleactive[0] = core::vbTrue;
    } else if (t == u"USB" || t == u"RS485") {
        m.scaleid[i] = core::toInt32(row.id, idField);
        m.scaleactive[i] = row.active ? core::vbTrue : core::vbFalse;
        m.scalepolltime[i] = core::toDouble(row.polltime, QStringLiteral("polltime"));
        if (t == u"USB") {
            const auto baud =
                static_cast<std::uint32_t>(core::toInt32(row.baud, QStringLiteral("baud")));
            if (!s_.usb->openUsbScale(i, baud)) {
                return false;
            }
            openedScales_.push_back(m.netid[i]);
        }
    } else if (t == u"USB485") {
        // The rows are not read on this link: scaleid stays 0.
    } else if (ethernet_) {
        ethernet_->ethernet_start();
        if (gone()) {
            return false;
        }
        // The first request goes out once for the activation, always to address 130.
        if (i == 0 && ethernet_->Winsock1().State() == links::Winsock::sckConnected) {
            f_.Timer2.setEnabled(false);
            f_.Timer3.setEnabled(false);
            ethernet_->Winsock1().SendData(acquisition::frames::addressedRequest(0x82, 'K'));
        }
    }
    return true;
}

void Form1::closeScaleDevices() {
    for (const std::int32_t handle : openedScales_) {
        s_.usb->closeScaleDevice(handle);
    }
    openedScales_.clear();
}

void Form1::adddefrec(int i) {
    core::Module1& m = s_.m;
    const QString serialNo = core::trimBlanks(m.scaleserial[i]);
    bool exists = false;
    if (data1_.RecordCount() > 0) {
        data1_.MoveFirst();
        exists = data1_.FindSerialNo(serialNo);
    }
    if (!exists) {
        try {
            auto connection = core::Connection::open(f_.data1.ConnectionString);
            core::insertScaleCfg(
                connection,
                core::linkDefaultScaleCfg(m.commtype, core::trimBlanks(m.scaledesc[i]), serialNo));
        } catch (const core::DatabaseError&) {
            // The insert is trapped: a row the store refuses is simply not added.
        }
    }
    yieldToEvents();
    data1_.MoveLast();
}

void Form1::fillCombo() {
    core::Module1& m = s_.m;
    f_.Combo1.clear();
    for (int i = 0; i < m.scalecount; ++i) {
        f_.Combo1.addItem(m.scaledesc[i]);
    }
    f_.opt_ID.setValue(true);
    yieldToEvents();
    yieldToEvents();
    if (gone()) {
        return;
    }
    f_.Combo1.setListIndex(0);
    m.curscale = 0;
    f_.txt_polltime.text = QString::number(m.netpolltime);
    scanTable_.fillgrid();
}

void Form1::seedTimers() {
    core::Module1& m = s_.m;
    const QString& t = m.commtype;
    if (t != u"USB485" && t != u"RS485" && t != u"USB") {
        return;
    }
    // Seconds taken as milliseconds: the mode routines set the real interval.
    const int interval = static_cast<int>(std::nearbyint(m.netpolltime));
    for (int i = 0; i < core::timer1Count; ++i) {
        f_.Timer1[i].setInterval(interval);
        f_.Timer1[i].setEnabled(false);
    }
    yieldToEvents();
}

void Form1::setDefaultMode() {
    const QString& t = s_.m.commtype;
    if (t == u"RS232") {
        f_.opt_single.setValue(true);
    } else if (t == u"USB485" || t == u"Ethernet") {
        f_.opt_network.setValue(true);
        f_.opt_netscan.setValue(true);
    }
    slaves_.slavesload();
    yieldToEvents();
}

} // namespace stellwyn::display
