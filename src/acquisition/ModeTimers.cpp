#include "ModeTimers.h"

#include "AcquisitionContext.h"
#include "Frames.h"
#include "Scanners.h"
#include "core/Clock.h"
#include "core/Conversions.h"
#include "core/Delays.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/FtdiApi.h"
#include "links/SerialPort.h"
#include "links/UsbLink.h"

#include <cmath>
#include <limits>

namespace stellwyn::acquisition {

using core::yieldToEvents;

namespace {
constexpr int singleScanInterval = 250;
constexpr int timerLimit = 65535; // the longest interval a timer takes, in milliseconds
} // namespace

ModeTimers::ModeTimers(AcquisitionContext& context, Scanners& scanners)
    : c_(context), scanners_(scanners) {}

void ModeTimers::attach() {
    core::Form1Controls& f = c_.f;
    for (int i = 0; i < core::timer1Count; ++i) {
        f.Timer1[i].Tick = [this, i] { Timer1_Timer(i); };
    }
    f.Timer2.Tick = [this] { Timer2_Timer(); };
    f.Timer3.Tick = [this] { Timer3_Timer(); };
    f.Timer4.Tick = [this] { Timer4_Timer(); };
    f.chk_pollenb.Click = [this] { chk_pollenb_Click(); };
    f.opt_network.Click = [this] { opt_network_Click(); };
    f.opt_single.Click = [this] { opt_single_Click(); };
    f.Combo1.Click = [this] { Combo1_Click(); };
}

int ModeTimers::pollInterval() const {
    const QString text = c_.f.txt_polltime.text;
    double seconds = 0;
    if (!core::parseNumber(text, seconds)) {
        throw core::FatalError(
            QStringLiteral("Type mismatch: the poll time \"%1\" is not a number of seconds")
                .arg(text));
    }
    const double ms = std::nearbyint(seconds * 1000.0);
    if (ms < 0 || ms > timerLimit) {
        throw core::FatalError(
            QStringLiteral("Invalid property value: a poll time of %1 seconds is more than a timer "
                           "can hold")
                .arg(text));
    }
    return static_cast<int>(ms);
}

bool ModeTimers::networkLink() const {
    const QString& t = c_.m.commtype;
    return t == u"RS485" || t == u"USB" || t == u"USB485" || t == u"Ethernet";
}

char ModeTimers::readingCode() const {
    return frames::readingCode(c_.m.commtype, c_.f.chk_frame.value() == 1);
}

// A click that yielded may come back to a screen closed in that yield: the timers it would
// start would tick for a screen that is gone.
bool ModeTimers::screenClosed() const {
    return c_.m.formclosing == core::vbTrue;
}

void ModeTimers::setmode(int mode) {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    switch (mode) {
    case 0:
        m.opmode = 0;
        f.Timer4.setEnabled(false);
        f.Timer2.setInterval(singleScanInterval);
        f.Timer2.setEnabled(true);
        m.singlescale = static_cast<std::int16_t>(f.Combo1.listIndex());
        f.caption = m.commtype + QStringLiteral(" - Single Scale Mode");
        for (int i = 0; i < core::timer1Count; ++i) {
            f.Timer1[i].setEnabled(false);
        }
        yieldToEvents();
        m.networkmode = 0;
        yieldToEvents();
        break;
    case 1:
        m.opmode = 1;
        f.Timer2.setInterval(singleScanInterval);
        f.Timer2.setEnabled(true);
        m.singlescale = static_cast<std::int16_t>(f.Combo1.listIndex());
        f.Timer4.setInterval(pollInterval());
        f.Timer4.setEnabled(true);
        f.caption = m.commtype + QStringLiteral(" - Single Scale Mode (Polling Activated - ") +
                    core::trimBlanks(f.txt_polltime.text) + QStringLiteral(" sec)");
        break;
    case 2:
        // One scale on a line has no network to scan: the mode stays as it is.
        if (m.commtype == u"RS232") {
            return;
        }
        m.opmode = 2;
        f.Timer2.setEnabled(false);
        f.Timer4.setEnabled(false);
        f.caption = m.commtype + QStringLiteral(" - Network Mode");
        break;
    default:
        break;
    }
}

void ModeTimers::Timer1_Timer(int) {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;

    // A tick that falls due while a pass is still yielding is turned away; its element stays
    // armed and tries again one interval later.
    if (networkLink() && m.timerguard == 1) {
        return;
    }

    f.Timer1[m.timer1index].setEnabled(false);
    m.timer1index =
        static_cast<std::int16_t>(m.timer1index + 1 == core::timer1Count ? 0 : m.timer1index + 1);
    f.Timer1[m.timer1index].setInterval(pollInterval());
    f.Timer1[m.timer1index].setEnabled(true);

    const QString& t = m.commtype;
    if ((t == u"RS485" || t == u"USB485" || t == u"USB") && m.keypending == 1) {
        m.timerguard = 1;
        sendPendingKey();
        m.keypending = 0;
        m.keycode = 0;
        yieldToEvents();
    }

    m.keybusy = 1;
    if (t == u"RS232") {
        c_.links.MSComm1->Output(QByteArray("*"));
        c_.links.MSComm1->Output(QByteArray(1, readingCode()));
        m.keybusy = 0;
        return;
    }
    if (t == u"USB") {
        passUsb();
    } else if (t == u"RS485") {
        passRs485();
    } else if (t == u"USB485") {
        passUsb485();
    } else {
        m.keybusy = 0;
        return;
    }
    m.timerguard = 0;
    yieldToEvents();
    m.keybusy = 0;
}

void ModeTimers::sendPendingKey() {
    core::Module1& m = c_.m;
    const std::optional<char> key = frames::passKey(m.keycode);
    const QString& t = m.commtype;
    if (t == u"USB") {
        c_.links.usb->usb_write(QByteArray("*"));
        if (key) {
            c_.links.usb->usb_write(QByteArray(1, *key));
        }
        return;
    }
    const QByteArray prefix = frames::addressPrefix(m.netid[m.curscale]);
    if (t == u"RS485") {
        c_.links.MSComm1->Output(prefix.left(1));
        c_.links.MSComm1->Output(prefix.mid(1, 1));
        if (key) {
            c_.links.MSComm1->Output(QByteArray(1, *key));
        }
    } else {
        c_.links.usb->usb_write(prefix.left(1));
        c_.links.usb->usb_write(prefix.mid(1, 1));
        if (key) {
            c_.links.usb->usb_write(QByteArray(1, *key));
        }
    }
}

void ModeTimers::passUsb() {
    core::Module1& m = c_.m;
    m.timerguard = 1;
    links::DWORD written = 0;
    for (m.singlescale = 0; m.singlescale < m.scalecount; ++m.singlescale) {
        // The scan asks every USB scale with "1", whatever "Frame" says.
        const links::FtHandle handle = m.netid[m.singlescale];
        c_.links.ftdi->FT_Write(handle, QByteArray("*"), 1, written);
        c_.links.ftdi->FT_Write(handle, QByteArray("1"), 1, written);
        yieldToEvents();
        scanners_.USB_inputscan();
    }
}

void ModeTimers::passRs485() {
    core::Module1& m = c_.m;
    m.timerguard = 1;
    for (m.singlescale = 0; m.singlescale < m.scalecount; ++m.singlescale) {
        const QByteArray frame = frames::addressedRequest(m.netid[m.singlescale], readingCode());
        for (char byte : frame) {
            c_.links.MSComm1->Output(QByteArray(1, byte));
        }
        yieldToEvents();
        yieldToEvents();
        scanners_.rs485_inputscan();
    }
}

void ModeTimers::netdelWait() {
    // Deliberately no yield: nothing may run between the pause and the write.
    core::pause(c_.clock, c_.m.netdeltime);
}

void ModeTimers::passUsb485() {
    core::Module1& m = c_.m;
    m.timerguard = 1;
    for (m.singlescale = 0; m.singlescale < m.scalecount; ++m.singlescale) {
        if (m.formclosing != 0) {
            break;
        }
        netdelWait();
        if (m.formclosing == -1) {
            break;
        }
        const QByteArray frame = frames::addressedRequest(m.netid[m.singlescale], readingCode());
        if (c_.f.chk_txon.value() == 1) {
            links::DWORD written = 0;
            c_.links.ftdi->FT_Write(m.usbhandle, frame, 3, written);
        }
        if (m.formclosing == 0) {
            scanners_.USB485_inputscan();
        }
        yieldToEvents();
    }
}

void ModeTimers::Timer2_Timer() {
    const QString& t = c_.m.commtype;
    if (t == u"RS232") {
        scanners_.rs232_inputscan();
    } else if (t == u"USB") {
        scanners_.USB_inputscan();
    } else if (t == u"RS485") {
        scanners_.rs485_inputscan();
    } else if (t == u"USB485") {
        scanners_.USB485_inputscan();
    }
}

void ModeTimers::Timer3_Timer() {
    core::Module1& m = c_.m;
    if (m.keybusy != 0 || m.keypending == 0) {
        return;
    }
    m.keybusy = 1;
    yieldToEvents();
    const QByteArray prefix = frames::addressPrefix(m.netid[m.curscale]);
    c_.links.MSComm1->Output(prefix.left(1));
    c_.links.MSComm1->Output(prefix.mid(1, 1));
    if (const std::optional<char> key = frames::keypadKey(m.keycode)) {
        c_.links.MSComm1->Output(QByteArray(1, *key));
        if (m.keycode == 1 && m.networkmode == 0) {
            scanners_.rs485_inputscan();
        }
    }
    m.keypending = 0;
    m.keycode = 0;
    m.keybusy = 0;
    yieldToEvents();
}

void ModeTimers::Timer4_Timer() {
    core::Module1& m = c_.m;
    const QString& t = m.commtype;
    const char code = readingCode();
    if (t == u"USB") {
        c_.links.usb->usb_write(QByteArray("*"));
        c_.links.usb->usb_write(QByteArray(1, code));
    } else if (t == u"RS232") {
        c_.links.MSComm1->Output(QByteArray("*"));
        c_.links.MSComm1->Output(QByteArray(1, code));
    } else if (t == u"RS485") {
        const QByteArray prefix = frames::addressPrefix(m.netid[m.curscale]);
        c_.links.MSComm1->Output(prefix.left(1));
        c_.links.MSComm1->Output(prefix.mid(1, 1));
        c_.links.MSComm1->Output(QByteArray(1, code));
    } else if (t == u"USB485") {
        const QByteArray prefix = frames::addressPrefix(m.netid[m.curscale]);
        c_.links.usb->usb_write(prefix.left(1));
        c_.links.usb->usb_write(prefix.mid(1, 1));
        c_.links.usb->usb_write(QByteArray(1, code));
    } else if (t == u"Ethernet") {
        if (c_.hooks.winsockSendData) {
            c_.hooks.winsockSendData(frames::addressedRequest(m.netid[m.curscale], code));
        }
    }
}

void ModeTimers::keepIntervals(bool disable) {
    core::Form1Controls& f = c_.f;
    auto keep = [&](core::Timer& timer, int slot) {
        // The saved copy is 16-bit: a longer interval overflows it, as it always did.
        if (timer.interval() > std::numeric_limits<std::int16_t>::max()) {
            throw core::FatalError(
                QStringLiteral("Overflow: a timer interval of %1 ms").arg(timer.interval()));
        }
        savedIntervals_[static_cast<std::size_t>(slot)] =
            static_cast<std::int16_t>(timer.interval());
        timer.setInterval(0);
        if (disable) {
            timer.setEnabled(false);
        }
    };
    for (int i = 0; i < core::timer1Count; ++i) {
        keep(f.Timer1[i], i);
    }
    keep(f.Timer2, 10);
    keep(f.Timer3, 11);
    keep(f.Timer4, 12);
}

void ModeTimers::halttimers() {
    keepIntervals(false);
}

void ModeTimers::restarttimers() {
    keepIntervals(true);
}

void ModeTimers::net_stat_get() {
    savedSingle_ = c_.f.opt_single.value();
    savedNetwork_ = c_.f.opt_network.value();
    savedPoll_ = c_.f.chk_pollenb.value();
}

void ModeTimers::net_stat_put() {
    core::Form1Controls& f = c_.f;
    if (savedSingle_) {
        f.opt_single.setValue(savedSingle_);
        f.chk_pollenb.setValue(savedPoll_);
        // In plain single mode no control changes value here, so nothing would bring the
        // scanner's timer back from the halt: restart it by hand.
        if (savedPoll_ == 0) {
            f.Timer2.setInterval(singleScanInterval);
            f.Timer2.setEnabled(true);
        }
    } else {
        f.opt_network.setValue(savedNetwork_);
    }
}

void ModeTimers::chk_pollenb_Click() {
    core::Form1Controls& f = c_.f;
    yieldToEvents();
    if (screenClosed()) {
        return;
    }
    const bool polling = f.chk_pollenb.value() == 1;
    setmode(polling ? 1 : 0);
    f.Label2.enabled = !polling;
    f.txt_polltime.enabled = !polling;
    f.opt_network.enabled = !polling;
}

void ModeTimers::opt_network_Click() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    if (!f.opt_network.value()) {
        return;
    }
    f.NetList.visible = true;
    setmode(2);
    f.chk_pollenb.enabled = false;
    f.txt_polltime.enabled = false;
    f.Label2.enabled = false;
    m.timer1index = 0;
    // Only element 0 is armed here; the chain gives each next element its interval.
    for (int i = 0; i < core::timer1Count; ++i) {
        f.Timer1[0].setInterval(pollInterval());
    }
    yieldToEvents();
    if (screenClosed()) {
        return;
    }
    f.Timer1[0].setEnabled(true);
    yieldToEvents();
    m.networkmode = 1;
    f.caption = m.commtype + QStringLiteral(" - Network (Multi User) Mode (running ") +
                core::trimBlanks(f.txt_polltime.text) + QStringLiteral(" sec)");
    yieldToEvents();
}

void ModeTimers::opt_single_Click() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    if (!f.opt_single.value()) {
        return;
    }
    for (int i = 0; i < core::timer1Count; ++i) {
        f.Timer1[i].setEnabled(false);
    }
    yieldToEvents();
    m.networkmode = 0;
    f.caption = m.commtype + QStringLiteral(" - Network Mode (standby)");
    yieldToEvents();
    f.NetList.clearCells();
    yieldToEvents();
    if (screenClosed()) {
        return;
    }
    setmode(0);
    f.chk_pollenb.enabled = true;
    f.txt_polltime.enabled = true;
    f.Label2.enabled = true;
}

void ModeTimers::Combo1_Click() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    yieldToEvents();
    try {
        if (c_.hooks.data1FindId) {
            c_.hooks.data1FindId(m.scaleid[f.Combo1.listIndex()]);
        }
    } catch (const core::FatalError&) {
        // The cursor move is guarded: a scale without a row leaves the cursor where it was.
    }
    yieldToEvents();
    m.curscale = static_cast<std::int16_t>(f.Combo1.listIndex());
    m.curnetid = m.netid[m.curscale];
    if (m.opmode == 0 || m.opmode == 1) {
        m.singlescale = m.curscale;
    }
}

} // namespace stellwyn::acquisition
