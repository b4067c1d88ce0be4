#pragma once

#include "links/AdapterPresence.h"
#include "links/FtdiChannel.h"
#include "links/LineSettings.h"
#include "links/TtyLine.h"

#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>

namespace stellwyn::links {

// An FTDI adapter under the system's own driver, driven as a terminal device. Received bytes
// stay in the driver's queue, which bounds them, until the program reads them, as they stay on
// the chip under FTDI's own library: the queue status is the driver's count, and the event loop
// is woken for input only while somebody waits for it. An adapter pulled out is told once and
// tried again now and then, by its name and then by its serial number; when it is back, it gets
// the line it had and the link goes on by itself.
class KernelChannel final : public FtdiChannel {
public:
    // Nothing when the device will not open. showStatus hears that the device went and came
    // back.
    static std::unique_ptr<KernelChannel> open(const QString& path, const QByteArray& serialNumber,
                                               std::function<void(const QString&)> showStatus);
    ~KernelChannel() override;
    KernelChannel(const KernelChannel&) = delete;
    KernelChannel& operator=(const KernelChannel&) = delete;

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
    bool usable();
    // Opens the device again where it now is; false while it is still away.
    bool reopen();
    bool openAt(const QString& place);
    void closeDevice();
    // Lets the next byte that comes in wake the event loop, once.
    void watchForInput();
    // Ends a gathering early.
    void release();
    void sendPending();
    // A call on the device failed with err: a device gone is told and looked for again,
    // anything else counts as a link error.
    void failed(int err);

    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    // The line the device had before we opened it, given back at close.
    QByteArray savedLine_;
    QString path_;
    QByteArray serialNumber_;
    AdapterPresence presence_;
    LineSettings line_;
    TtyFlow flow_ = TtyFlow::none;
    // Bytes the driver would not take yet (a line held by its flow control).
    QByteArray pending_;
    // Set when a call finds the device gone; acted on at the next use.
    bool lost_ = false;
    // The input watch woke the loop; a wake with nothing to read is a hang-up.
    bool woke_ = false;
    // Bytes gather in the driver until it rings; nobody is woken for them meanwhile.
    QTimer gathering_;
};

} // namespace stellwyn::links
