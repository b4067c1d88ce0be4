#pragma once

#include <QString>
#include <functional>

namespace stellwyn::core {
class AppHome;
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {

class SerialPort;

// The serial link of the indicator screen: one scale on RS-232, or a network of scales on
// RS-485, opened on the screen's MSComm1. The results are the shared scale table.
class SerialLink {
public:
    SerialLink(core::Module1& m, SerialPort& MSComm1, core::Dialogs& dialogs,
               const core::AppHome& home);

    void rs232_start();
    // Reads its scale list from sccfg.mdb in the program's folder, not from the data folder.
    void rs485_start();

    // A line for the frame's status bar: why a port would not open.
    std::function<void(const QString& text)> showStatus;

private:
    // The trapped part of a start: the port number again and the open. False after telling
    // the user that the port cannot be had.
    bool openTrapped();

    core::Module1& m_;
    SerialPort& MSComm1_;
    core::Dialogs& dialogs_;
    const core::AppHome& home_;
};

} // namespace stellwyn::links
