#pragma once

#include "links/FtdiChannel.h"
#include "links/ReadBufferBound.h"

#include <QSerialPort>

namespace stellwyn::links {

// An FTDI adapter under the system's own driver, driven as a serial device.
class KernelChannel final : public FtdiChannel {
public:
    // Nothing when the device will not open.
    static std::unique_ptr<KernelChannel> open(const QString& path);

    bool setBaudRate(DWORD baud) override;
    bool setFraming(int dataBits, int stopBits, char parity) override;
    bool setFlowControl(std::uint16_t flowControl) override;
    void write(const QByteArray& bytes) override;
    qint64 waiting() override;
    QByteArray read(qint64 maxSize, int timeoutMs) override;
    qint64 toWrite() override;
    void purge(bool received, bool toSend) override;
    DWORD modemStatus() override;

private:
    KernelChannel();
    // Takes in what the system holds, waiting up to timeoutMs for it.
    void takeIn(int timeoutMs);
    bool usable();

    QSerialPort port_;
    ReadBufferBound bound_{port_};
    bool lost_ = false;
};

} // namespace stellwyn::links
