#pragma once

#include "core/InputBound.h"

#include <QMetaObject>

class QSerialPort;

namespace stellwyn::links {

// Keeps the unread input of a serial port to its newest core::kInputCap bytes. The port takes
// in whatever arrives whenever events run, so one that nobody reads for a while (no mode picked
// yet, a device that talks unasked) would otherwise hold everything it ever received.
class ReadBufferBound {
public:
    // A cut is told under category, the one of the link the port serves.
    ReadBufferBound(QSerialPort& port, const QLoggingCategory& category);
    ~ReadBufferBound();
    ReadBufferBound(const ReadBufferBound&) = delete;
    ReadBufferBound& operator=(const ReadBufferBound&) = delete;

private:
    core::CutNote note_;
    QMetaObject::Connection connection_;
};

} // namespace stellwyn::links
