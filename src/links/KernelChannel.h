#pragma once

#include "links/AdapterPresence.h"
#include "links/FtdiChannel.h"
#include "links/LineSettings.h"
#include "links/LinksLog.h"
#include "links/ReadBufferBound.h"

#include <QSerialPort>
#include <QTimer>
#include <functional>

namespace stellwyn::links {

// An FTDI adapter under the system's own driver, driven as a serial device. An adapter pulled
// out is told once and tried again now and then, by its name and then by its serial number;
// when it is back, it gets the line it had and the link goes on by itself.
class KernelChannel final : public FtdiChannel {
public:
    // Nothing when the device will not open. showStatus hears that the device went and came
    // back.
    static std::unique_ptr<KernelChannel> open(const QString& path, const QByteArray& serialNumber,
                                               std::function<void(const QString&)> showStatus);

    bool setBaudRate(DWORD baud) override;
    bool setFraming(int dataBits, int stopBits, char parity) override;
    bool setFlowControl(std::uint16_t flowControl) override;
    void write(const QByteArray& bytes) override;
    qint64 waiting() override;
    QByteArray read(qint64 maxSize, int timeoutMs) override;
    qint64 toWrite() override;
    void purge(bool received, bool toSend) override;
    DWORD modemStatus() override;
    void gather(int bytes) override;

private:
    KernelChannel(const QString& path, const QByteArray& serialNumber,
                  std::function<void(const QString&)> showStatus);
    // Takes in what the system holds, waiting up to timeoutMs for it.
    void takeIn(int timeoutMs);
    bool usable();
    // Opens the device again where it now is; false while it is still away.
    bool reopen();
    bool openAt(const QString& place);
    // Ends a gathering: takes in every byte the system holds.
    void release();

    QSerialPort port_;
    ReadBufferBound bound_{port_, lcFtdi()};
    QString path_;
    QByteArray serialNumber_;
    AdapterPresence presence_;
    LineSettings line_;
    QSerialPort::FlowControl flow_ = QSerialPort::NoFlowControl;
    // Set by the port's error, which comes inside its own calls; acted on at the next use.
    bool lost_ = false;
    // Bytes gather in the system until it rings; the port takes in no more than it holds.
    QTimer gathering_;
};

} // namespace stellwyn::links
