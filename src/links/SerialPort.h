#pragma once

#include "core/FatalError.h"

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace stellwyn::links {

// An error raised by the serial control. The start routines trap it around the open; anywhere
// else nothing does, and it ends the program like any untrapped error.
class SerialPortError : public core::FatalError {
public:
    using FatalError::FatalError;
};

// MSComm1: the serial control of the indicator screen, with the operations the program uses
// and nothing more. It lives as long as the screen; the port closes when it goes.
class SerialPort {
public:
    virtual ~SerialPort() = default;

    virtual void CommPort(std::int16_t port) = 0;
    virtual void Settings(const QString& settings) = 0;
    // 0 lets one Input return everything that is waiting.
    virtual void InputLen(std::int16_t length) = 0;
    virtual void PortOpen(bool open) = 0;
    virtual bool isPortOpen() const = 0;
    // One byte per byte given, values 128 and above included; returns at once.
    virtual void Output(const QByteArray& bytes) = 0;
    virtual int InBufferCount() = 0;
    // Removes and returns what has arrived, never waiting for more.
    virtual QByteArray Input() = 0;
};

} // namespace stellwyn::links
