#pragma once

#include <QString>

namespace stellwyn::core {
class AppHome;
}

namespace stellwyn::links {
class FtdiApi;
}

namespace stellwyn::app {

// The demonstration: a home whose database runs "USB485" with three scales, NetIDs 130, 131
// and 132, on the simulated USB-RS485 adapter, and a frame large enough to show the screen.

// The demo's home: --home when given, else demo/ in the user's data folder, so that the
// demonstration never touches a real installation.
QString demoHomeFolder(const QString& commandLineHome);

// Makes the database and the settings of the demo where they are missing; what exists is left
// as the operator last had it.
void prepareDemoHome(const core::AppHome& home);

// Sets the simulated scales' loads moving, each to a new weight every few seconds, so that the
// screen shows live weights. Does nothing unless the library is the simulated one.
void startDemoMotion(links::FtdiApi& ftdi);

} // namespace stellwyn::app
