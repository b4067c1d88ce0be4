#include "Keypad.h"

#include "acquisition/AcquisitionContext.h"
#include "acquisition/Frames.h"
#include "core/Dialogs.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/SerialPort.h"
#include "links/UsbLink.h"

namespace stellwyn::display {

namespace {

constexpr std::array<std::array<int, 3>, 4> keycodes{
    {{7, 8, 9}, {4, 5, 6}, {1, 2, 3}, {10, 0, 11}}};

template <std::size_t N>
std::optional<int> bandOf(const std::array<Keypad::Band, N>& bands, int value) {
    for (std::size_t i = 0; i < N; ++i) {
        if (value >= bands[i].from && value <= bands[i].to) {
            return static_cast<int>(i);
        }
    }
    return std::nullopt;
}

} // namespace

int Keypad::keycodeAt(int column, int row) {
    return keycodes.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column));
}

std::optional<int> Keypad::keyAt(int x, int y) {
    const std::optional<int> column = bandOf(columns, x);
    const std::optional<int> row = bandOf(rows, y);
    if (!column || !row) {
        return std::nullopt;
    }
    return keycodeAt(*column, *row);
}

Keypad::Keypad(acquisition::AcquisitionContext& context, core::Dialogs& dialogs)
    : c_(context), dialogs_(dialogs) {}

void Keypad::vsElastic1_MouseMove(int x, int y) {
    vselasticx_ = x;
    vselasticy_ = y;
    core::yieldToEvents();
}

void Keypad::vsElastic1_Click() {
    const std::optional<int> keycode = keyAt(vselasticx_, vselasticy_);
    if (!keycode) {
        dialogs_.beep();
        return;
    }
    send(*keycode);
}

void Keypad::send(int keycode) {
    core::Module1& m = c_.m;
    const QString& t = m.commtype;
    const QByteArray key(1, *acquisition::frames::keypadKey(keycode));
    // On a network the pass owns the line: a key pressed meanwhile waits for the next tick.
    const bool deferred = m.opmode == 2 && (t == u"USB" || t == u"RS485" || t == u"USB485");
    if (deferred) {
        m.keypending = 1;
        m.keycode = static_cast<std::int16_t>(keycode);
        return;
    }
    if (t == u"USB") {
        c_.links.usb->usb_write(QByteArray("*"));
        c_.links.usb->usb_write(key);
    } else if (t == u"RS232") {
        c_.links.MSComm1->Output(QByteArray("*"));
        core::yieldToEvents();
        c_.links.MSComm1->Output(key);
    } else if (t == u"RS485") {
        c_.links.MSComm1->Output(acquisition::frames::addressPrefix(m.netid[m.curscale]) + key);
    } else if (t == u"USB485") {
        c_.links.usb->usb_write(acquisition::frames::addressPrefix(m.netid[m.curscale]) + key);
    }
}

} // namespace stellwyn::display
