#pragma once

#include "core/FatalError.h"
#include "links/LineSettings.h"
#include "links/SerialDevice.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>

namespace stellwyn::links {

// An error raised by the serial control. The start routines trap it around the open; anywhere
// else nothing does, and it ends the program like any untrapped error.
class SerialPortError : public core::FatalError {
public:
    using FatalError::FatalError;
};

// MSComm1: the serial control of the indicator screen, offering the operations the program
// uses and nothing more. It lives as long as the screen; the port closes when it goes.
class SerialPort {
public:
    explicit SerialPort(std::unique_ptr<SerialDevice> device);
    ~SerialPort();
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    void CommPort(std::int16_t port);
    void Settings(const QString& settings);
    // 0 lets one Input return everything that is waiting.
    void InputLen(std::int16_t length);
    void PortOpen(bool open);
    // One byte per byte given, values 128 and above included.
    void Output(const QByteArray& bytes);
    int InBufferCount();
    QByteArray Input();

private:
    void requireOpen() const;

    std::unique_ptr<SerialDevice> device_;
    std::int16_t port_ = 1;
    LineSettings settings_;
    std::int16_t inputLen_ = 0;
    bool open_ = false;
};

} // namespace stellwyn::links
