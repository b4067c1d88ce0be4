#include "links/SerialLink.h"

#include "core/AppHome.h"
#include "core/Dialogs.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "links/LinksLog.h"
#include "links/NetworkScaleRows.h"
#include "links/ScaleEntry.h"
#include "links/SerialPort.h"

namespace stellwyn::links {

SerialLink::SerialLink(core::Module1& m, SerialPort& MSComm1, core::Dialogs& dialogs,
                       const core::AppHome& home)
    : m_(m), MSComm1_(MSComm1), dialogs_(dialogs), home_(home) {}

void SerialLink::rs232_start() {
    m_.clearscales();
    // Outside the trap: a port number the control refuses here is not the user's "port in
    // use" but an error of the program.
    MSComm1_.CommPort(m_.commport);
    MSComm1_.Settings(m_.commsettings);
    MSComm1_.InputLen(0);
    if (!openTrapped()) {
        return;
    }
    m_.scalecount = 1;
    m_.usbdevindex[0] = 0;
    m_.scalemark[0] = kLinkScaleMark;
    m_.scaleserial[0] = unknownSerial();
    m_.scaledesc[0] = QStringLiteral("Scale - RS232");
    core::yieldToEvents();
}

void SerialLink::rs485_start() {
    m_.clearscales();
    auto sccfg = core::Connection::open(home_.file(QStringLiteral("sccfg.mdb")));
    const auto netIds = networkScaleNetIds(sccfg, dialogs_);
    if (!netIds) {
        return;
    }
    MSComm1_.CommPort(m_.commport);
    // The network runs at the one framing its indicators know, whatever the settings say.
    MSComm1_.Settings(core::serialLineSettings());
    MSComm1_.InputLen(0);
    if (!openTrapped()) {
        return;
    }
    m_.scalecount = 0;
    for (const QVariant& netId : *netIds) {
        fillNetworkEntry(m_, m_.scalecount, netIdOf(netId),
                         QStringLiteral("Corvane Scale - RS485 ID#"));
        ++m_.scalecount;
    }
    core::yieldToEvents();
}

bool SerialLink::openTrapped() {
    try {
        MSComm1_.CommPort(m_.commport);
        MSComm1_.PortOpen(true);
    } catch (const SerialPortError& error) {
        // The box says what it always said; the system's reason goes where a support engineer
        // looks for it.
        qCWarning(lcSerial).noquote() << error.text();
        if (showStatus) {
            showStatus(error.text());
        }
        dialogs_.beep();
        dialogs_.message(
            QStringLiteral("The com port you selected either doesn't exist or is already in use"));
        core::yieldToEvents();
        return false;
    }
    return true;
}

} // namespace stellwyn::links
