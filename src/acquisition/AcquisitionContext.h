#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>

namespace stellwyn::core {
class Clock;
class Form1Controls;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {
class FtdiApi;
class SerialPort;
class UsbLink;
} // namespace stellwyn::links

namespace stellwyn::acquisition {

// The links of the main screen. Only the ones of the current commtype are set: MSComm1 lives
// with the screen, the FTDI library and the USB link with the program.
struct LinkSet {
    links::SerialPort* MSComm1 = nullptr;
    links::FtdiApi* ftdi = nullptr;
    links::UsbLink* usb = nullptr;
};

// What the acquisition pieces reach beyond their own subsystem. The composition of the main
// screen sets the hooks; unset hooks do nothing.
struct Form1Hooks {
    // Slave window k shows this text on its display.
    std::function<void(int k, const QString& text)> showOnSlave;
    // The spreadsheet output of the reading just stored, for the scale of this list index.
    std::function<void(int listIndex)> excelOutput;
    // Moves the screen's scale-row cursor to the row of this ID.
    std::function<void(std::int32_t scaleid)> data1FindId;
    // The socket of the Ethernet link: sends only while connected, and says whether it did.
    std::function<bool(const QByteArray& bytes)> winsockSendData;
};

// Everything a piece of the main screen's acquisition is handed.
struct AcquisitionContext {
    core::Module1& m;
    core::Form1Controls& f;
    core::Clock& clock;
    LinkSet links;
    Form1Hooks hooks;
};

} // namespace stellwyn::acquisition
