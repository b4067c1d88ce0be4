#pragma once

#include "sim/Bus.h"
#include "sim/TcpServer.h"

#include <QString>

namespace stellwyn::core {
class AppHome;
class Clock;
} // namespace stellwyn::core

namespace stellwyn::links {
class FtdiApi;
}

namespace stellwyn::app {

// The demonstration: a home whose database runs "USB485" with three scales, NetIDs 130, 131
// and 132, on the simulated USB-RS485 adapter, and a frame large enough to show the screen.

// The demo's home: --home when given, else demo/ in the user's data folder, so that the
// demonstration never touches a real installation.
QString demoHomeFolder(const QString& commandLineHome, bool ethernet = false);

// Makes the database and the settings of the demo where they are missing; what exists is left
// as the operator last had it. On Ethernet the database runs "Ethernet" with two scales, NetIDs
// 130 and 131.
void prepareDemoHome(const core::AppHome& home, bool ethernet = false);

// The Ethernet demonstration's far end: two simulated indicators in this process, behind a TCP
// port on the loopback that only this computer reaches. They send their weights unasked twice
// a second, as scales in continuous output do, and their loads come and go.
class EthernetDemo {
public:
    explicit EthernetDemo(const core::Clock& clock);
    // Listens on a free port of 127.0.0.1 and points the home's scale address at it.
    bool start(const core::AppHome& home, QString* error);

private:
    sim::Bus bus_;
    sim::TcpServer server_;
};

// Sets the simulated scales' loads moving, each to a new weight every few seconds, so that the
// screen shows live weights. Does nothing unless the library is the simulated one. The loads are
// timed on the simulated line's own clock.
void startDemoMotion(links::FtdiApi& ftdi, const core::Clock& clock);

} // namespace stellwyn::app
