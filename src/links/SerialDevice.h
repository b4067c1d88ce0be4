#pragma once

#include "links/LineSettings.h"

#include <QByteArray>
#include <QString>

namespace stellwyn::links {

// The device behind the serial control: a real port, or a test's stand-in. It never blocks:
// writes are handed to the system at once and reads take only what has already arrived.
class SerialDevice {
public:
    virtual ~SerialDevice() = default;

    // Opens the device that port number `port` names. On failure, returns false and says why.
    virtual bool open(int port, QString& error) = 0;
    virtual void close() = 0;
    // False when the device will not take the framing.
    virtual bool configure(const LineSettings& settings) = 0;
    virtual void write(const QByteArray& bytes) = 0;
    virtual qint64 bytesWaiting() = 0;
    virtual QByteArray read(qint64 maxSize) = 0;
};

} // namespace stellwyn::links
