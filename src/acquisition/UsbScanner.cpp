#include "AcquisitionContext.h"
#include "ReplyText.h"
#include "Scanners.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/FtdiApi.h"

namespace stellwyn::acquisition {

using core::yieldToEvents;

// The scale of a USB device of its own, whose handle stands in netid: whatever it has sent since
// the last look is its reading, with or without a line end.
void Scanners::USB_inputscan() {
    core::Module1& m = c_.m;
    links::FtdiApi& ftdi = *c_.links.ftdi;
    const int i = m.singlescale;

    links::DWORD waiting = 0;
    ftdi.FT_GetQueueStatus(m.netid[i], waiting);
    if (waiting == 0) {
        return;
    }
    QByteArray chunk;
    links::DWORD got = 0;
    ftdi.FT_Read(m.netid[i], chunk, waiting, got);
    chunk.truncate(got);

    m.scalelast[0].clear();
    if (receive(chunk).isEmpty()) {
        // Only the line end of the last reading came: there is no new reading in it.
        return;
    }
    const QString line = core::trimBlanks(m.scalelast[0]);
    m.scalelast[0].clear();
    m.scaleweight[i] = cutAtLineEnd(line);
    showOnScreen(i);
    scanTable_.showScale(i);
    if (c_.f.Check1.value() == 1) {
        store(m.scaledesc[i], m.scaleweight[i]);
        yieldToEvents();
    }
}

} // namespace stellwyn::acquisition
