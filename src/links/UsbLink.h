#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace stellwyn::core {
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {

class FtdiApi;

// The link through FTDI USB devices. "USB485": one USB-RS485 adapter, device 0, carries a
// network of scales; it is opened once and stays open until the program ends. "USB": every
// scale is a USB device of its own, and netid holds its handle.
class UsbLink {
public:
    UsbLink(core::Module1& m, FtdiApi& ftdi, core::Dialogs& dialogs);

    // Opens the adapter when usbhandle is 0; usbinitfail tells the outcome.
    void usb_open();
    // Safe on any value the table holds: a handle the library does not know is refused by it.
    void usb_close();
    // At most 256 bytes, which is more than any caller sends.
    void usb_write(const QByteArray& text);
    // The "USB" table: one entry for each device on the bus.
    void usb_start();
    // The "USB485" table: the adapter, then the network scales of the data folder.
    void usb485_start();
    // The activation's open of scale i on "USB", device i of the bus: its handle goes into
    // netid[i] and its line is set up at the baud rate of the scale's row. False, after saying
    // so, when the device does not open.
    bool openUsbScale(int i, std::uint32_t baud);
    // Gives back a scale device that openUsbScale opened; the result is of no use to anyone.
    void closeScaleDevice(std::int32_t handle);

    // The box of a failed flow control, which the timeouts' failures show as well.
    static QString flowControlFailed();

private:
    // Baud rate, framing, flow control and timeouts of an open device; each failure is told
    // and passed over.
    void setLine(std::int32_t handle, std::uint32_t baud);
    // The text of a list answer in ftlistbuf; false when the device did not answer.
    bool listDevice(int index, unsigned flags, QString& text);

    core::Module1& m_;
    FtdiApi& ftdi_;
    core::Dialogs& dialogs_;
};

} // namespace stellwyn::links
