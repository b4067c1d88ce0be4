#include "StatusLine.h"

#include "Form1.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "core/ScaleAddress.h"
#include "core/SettingsStore.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/DataColTable.h"
#include "core/store/Outbox.h"
#include "core/store/ReadingServer.h"
#include "links/Ethernet.h"
#include "links/KernelDeviceList.h"
#include "links/LinksLog.h"
#include "links/SerialPort.h"

#include <QFileInfo>

namespace stellwyn::display {

QString LinkState::text() const {
    if (commtype.isEmpty()) {
        return QStringLiteral("no link");
    }
    QString line = commtype + (open ? QStringLiteral(" open") : QStringLiteral(" closed"));
    if (!device.isEmpty()) {
        line += QStringLiteral(" on ") + device;
    }
    return line + QStringLiteral(", %1 errors since start").arg(errors);
}

LinkState linkState(const core::Module1& m, Form1* screen, const core::SettingsStore& settings) {
    LinkState state;
    state.commtype = m.commtype;
    state.errors = links::linkErrorsSinceStart();
    if (screen == nullptr || screen->isUnloaded()) {
        return state;
    }
    Form1& form = *screen;
    const QString& t = m.commtype;
    if (t == u"RS232" || t == u"RS485") {
        state.open = form.MSComm1().isPortOpen();
        state.device = settings.serialDevicePath(m.commport);
    } else if (t == u"USB485" || t == u"USB") {
        state.open = m.usbinitfail == 0 && (m.usbhandle != 0 || m.scalecount > 0);
        const QString backend =
            settings.getSetting(QStringLiteral("USB"), QStringLiteral("Backend"), QString());
        if (backend.isEmpty() || backend == u"kernel") {
            state.device = links::kernelDevices(settings).value(0).path;
        } else {
            state.device = backend;
        }
    } else if (t == u"Ethernet") {
        state.open = form.ethernet() != nullptr &&
                     form.ethernet()->Winsock1().State() == links::Winsock::sckConnected;
        state.device = core::storedScaleAddress(settings);
    }
    return state;
}

namespace {

// A station whose readings go to a server: this station's readings of today on the server, the
// readings still in its outbox, and why, when the server is away.
QString serverStatus(const QString& readingsconn, const core::Clock& clock) {
    QString today = QStringLiteral("readings today unknown");
    QString problem;
    try {
        core::Connection server = core::Connection::open(readingsconn);
        today = QStringLiteral("%1 readings stored today")
                    .arg(core::countReadingsOn(server, clock.now().date()));
    } catch (const core::ServerError& error) {
        problem = error.text();
    }
    QString line = today;
    const QString outbox = core::dataSourceOf(readingsconn);
    if (QFileInfo(outbox).isFile()) {
        try {
            core::Connection local = core::Connection::open(outbox);
            core::prepareOutbox(local);
            if (const qint64 waiting = core::countWaiting(local); waiting > 0) {
                line += QStringLiteral("; %1 readings waiting").arg(waiting);
            }
        } catch (const core::DatabaseError&) {
        }
    }
    if (!problem.isEmpty()) {
        line += QStringLiteral("; ") + problem;
    }
    return line;
}

} // namespace

QString statusLine(const LinkState& link, const QString& dataconn, const core::Clock& clock) {
    if (core::namesServer(dataconn)) {
        return QStringLiteral("Link %1; %2").arg(link.text(), serverStatus(dataconn, clock));
    }
    QString today = QStringLiteral("readings today unknown");
    // Only a file that is there: opening one that is not would make an empty one.
    if (!dataconn.isEmpty() && QFileInfo(core::dataSourceOf(dataconn)).isFile()) {
        try {
            auto connection = core::Connection::open(dataconn);
            today = QStringLiteral("%1 readings stored today")
                        .arg(core::countReadingsOn(connection, clock.now().date()));
        } catch (const core::DatabaseError&) {
            // The line says it does not know; the store's own users report the fault.
        }
    }
    return QStringLiteral("Link %1; %2").arg(link.text(), today);
}

} // namespace stellwyn::display
