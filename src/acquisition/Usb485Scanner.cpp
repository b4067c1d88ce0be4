#include "AcquisitionContext.h"
#include "ReplyMarkers.h"
#include "ReplyText.h"
#include "ReplyWait.h"
#include "Scanners.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/FtdiApi.h"

#include <algorithm>

namespace stellwyn::acquisition {

using core::yieldToEvents;

namespace {
// The read buffer of the adapter holds this much; more waiting is taken by the next read.
constexpr links::DWORD readBufferSize = 256;
// A request still on its way out, and a reply cell with its CR LF: the time these take on the
// wire is the earliest a reply can be complete and have left the line.
constexpr int requestBytes = 3;
constexpr int cellBytes = 11;
} // namespace

// The reply to one request of a network pass on the USB-RS485 adapter.
void Scanners::USB485_inputscan() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    links::FtdiApi& ftdi = *c_.links.ftdi;

    yieldToEvents();
    if (closing()) {
        return;
    }
    m.scalelast[0].clear();

    // The last chunk read: a print that makes several indicators answer at once arrives as one
    // chunk of cells, and the cells behind the first are read from it.
    QByteArray lastChunk;
    bool printflag = false;
    // No look finds a reply before a whole cell can have come. The bytes gather for the wire
    // time of the request and the whole cell, its LF too: most replies are then taken in one
    // wakeup, a line end later than their CR came, where a look at the CR would cost one more
    // wakeup for the CR and leave the LF in front of the next reply. A scale of the pass that
    // did not answer its last request is not expected to answer this one: its wait is not
    // broken for a gathering that would find nothing, and a reply that comes after all is
    // taken as its bytes come.
    const int asked = m.singlescale;
    const bool pass = asked >= 0 && asked < m.scalecount && asked < core::scaleTableSize;
    if (!pass || !silentLast_[static_cast<std::size_t>(asked)]) {
        ftdi.gatherReceived(m.usbhandle, requestBytes + cellBytes);
    }
    if (pass) {
        silentLast_[static_cast<std::size_t>(asked)] = false;
    }
    ReplyWait wait(c_.clock, ftdi.wakesEventLoop());
    for (;;) {
        if (wait.over()) {
            // A silent scale: whatever it may still send is thrown away with the request.
            if (pass) {
                silentLast_[static_cast<std::size_t>(asked)] = true;
            }
            m.usberrcount += 1;
            ftdi.FT_Purge(m.usbhandle, links::FT_PURGE_RX | links::FT_PURGE_TX);
            return;
        }
        wait.yield();
        links::DWORD waiting = 0;
        ftdi.FT_GetQueueStatus(m.usbhandle, waiting);
        if (closing()) {
            return;
        }
        if (waiting == 0) {
            continue;
        }
        QByteArray chunk;
        links::DWORD got = 0;
        ftdi.FT_Read(m.usbhandle, chunk, std::min(waiting, readBufferSize), got);
        chunk.truncate(got);
        lastChunk = receive(chunk);
        printflag = m.scalelast[0].size() > 1 && m.scalelast[0].at(1) == u'+';
        if (lastChunk.contains('\r')) {
            break;
        }
    }

    const QString line = core::trimBlanks(m.scalelast[0]);
    m.scalelast[0].clear();
    const std::optional<AddressedReply> reply = splitAddress(line);
    if (!reply) {
        return;
    }
    const std::optional<MarkedText> marked = readMarkers(m, reply->text, printflag);
    if (!marked) {
        return;
    }
    if (marked->groupflag == 1) {
        f.txt_groupnum.text =
            QStringLiteral(" Group ") + marked->group + QStringLiteral("  ") + marked->groupText;
    }
    const int i = findScale(m, reply->address);
    if (i < 0) {
        return;
    }

    m.scaleweight[i] = marked->text;
    yieldToEvents();
    // A screen that closed in a yield shows and keeps nothing more.
    if (closing()) {
        return;
    }
    showOnScreen(i);
    // Slave window k shows table entry k, so only the window of this scale's entry changes.
    if (m.slaveopen[i] == 1 && i < core::slaveCount && c_.hooks.showOnSlave) {
        c_.hooks.showOnSlave(i, m.scaleweight[i]);
    }
    scanTable_.showScale(i);

    const QString scaleid = QString::number(m.netid[i]);
    if (f.Check1.value() == 1 && marked->groupflag == 1) {
        store(scaleid, m.scaleweight[i]);
        yieldToEvents();
        if (closing()) {
            return;
        }
    }
    // A "#" reading with "Auto Save" ticked is kept by both stores: that is wanted.
    if (f.chk_SaveOnPrint.value() == 1 || marked->printflag) {
        qint64 id = store(scaleid, lastSix(m.scaleweight[i]));
        // The other indicators of the same print: rows only, never the display or the table.
        for (const FurtherCell& cell : furtherCells(lastChunk)) {
            id = store(QString::number(cell.address), lastSix(cell.text));
        }
        if (f.chk_Excel.value() == 1) {
            excelOutput(id);
        }
    }
    yieldToEvents();
}

} // namespace stellwyn::acquisition
