#pragma once

#include "links/LinksLog.h"
#include "links/ReadBufferBound.h"
#include "links/SerialDevice.h"

#include <QSerialPort>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

// A serial device of the system through Qt Serial Port. Port number n is the device that the
// settings store names for COMn.
class QtSerialDevice final : public SerialDevice {
public:
    explicit QtSerialDevice(const core::SettingsStore& settings);

    bool open(int port, QString& error) override;
    void close() override;
    bool configure(const LineSettings& settings) override;
    void write(const QByteArray& bytes) override;
    qint64 bytesWaiting() override;
    QByteArray read(qint64 maxSize) override;

private:
    void dropLostDevice();

    const core::SettingsStore& settings_;
    QSerialPort port_;
    ReadBufferBound bound_{port_, lcSerial()};
    bool lost_ = false;
};

} // namespace stellwyn::links
