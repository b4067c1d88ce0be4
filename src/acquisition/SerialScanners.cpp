#include "AcquisitionContext.h"
#include "ReplyText.h"
#include "ReplyWait.h"
#include "Scanners.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/SerialPort.h"

namespace stellwyn::acquisition {

using core::yieldToEvents;

// One scale on the serial line, looked at on every tick of the single mode. A line may come in
// pieces over several ticks, so the receive text lives on until its CR is there.
void Scanners::rs232_inputscan() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    links::SerialPort& port = *c_.links.MSComm1;

    yieldToEvents();
    // The port closes with the screen, which may have gone in the yield.
    if (closing() || port.InBufferCount() == 0 || !receive(port.Input()).contains('\r')) {
        return;
    }
    const QString line = core::trimBlanks(m.scalelast[0]);
    m.scalelast[0].clear();

    // A printed line: "#", the group, then the reading. It is always kept, whatever is ticked,
    // and shown as it came, group and all.
    const bool printed = line.contains(u'#');
    if (printed) {
        f.txt_groupnum.text =
            QStringLiteral(" Group ") + line.mid(1, 1) + QStringLiteral("  ") + line.mid(2);
    }
    m.scaleweight[0] = cutAtLineEnd(line);
    f.Screen.caption = m.scaleweight[0];
    if (printed) {
        store(m.scaledesc[0], m.scaleweight[0]);
        yieldToEvents();
    }
}

// The reply to one request of a network pass on the serial port. A reply cut off by the end of
// the wait stays in the receive text and is completed by the next call.
void Scanners::rs485_inputscan() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    links::SerialPort& port = *c_.links.MSComm1;

    // Looked at on the short period: not every serial backend wakes the loop as bytes come.
    ReplyWait wait(c_.clock, false);
    for (;;) {
        if (wait.over()) {
            return;
        }
        wait.yield();
        if (closing()) {
            return;
        }
        if (port.InBufferCount() > 0 && receive(port.Input()).contains('\r')) {
            break;
        }
    }

    const QString line = core::trimBlanks(m.scalelast[0]);
    m.scalelast[0].clear();
    const std::optional<AddressedReply> reply = splitAddress(line);
    if (!reply) {
        return;
    }
    const int i = findScale(m, reply->address);
    if (i < 0) {
        return;
    }
    m.scaleweight[i] = cutAtLineEnd(reply->text);
    showOnScreen(i);
    scanTable_.showScale(i);
    // This network has always logged the same constant in both columns, never the scale's data.
    if (f.Check1.value() == 1) {
        store(QStringLiteral("123"), QStringLiteral("123"));
        yieldToEvents();
    }
}

} // namespace stellwyn::acquisition
