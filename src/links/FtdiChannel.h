#pragma once

#include "links/FtdiApi.h"

#include <QByteArray>
#include <QList>

namespace stellwyn::links {

// What the list calls tell of one device.
struct FtdiDeviceInfo {
    QByteArray serialNumber;
    QByteArray description;
};

// One opened device of a backend that is not FTDI's own library: a byte pipe with a line.
class FtdiChannel {
public:
    virtual ~FtdiChannel() = default;

    virtual bool setBaudRate(DWORD baud) = 0;
    // dataBits 7 or 8; stopBits 1 or 2; parity one of N, O, E, M, S.
    virtual bool setFraming(int dataBits, int stopBits, char parity) = 0;
    virtual bool setFlowControl(std::uint16_t flowControl) = 0;
    virtual void write(const QByteArray& bytes) = 0;
    virtual qint64 waiting() = 0;
    // Up to maxSize bytes, waiting no longer than timeoutMs for them, and never running events.
    virtual QByteArray read(qint64 maxSize, int timeoutMs) = 0;
    virtual qint64 toWrite() = 0;
    virtual void purge(bool received, bool toSend) = 0;
    virtual DWORD modemStatus() = 0;
    // See FtdiApi::gatherReceived.
    virtual void gather(int bytes) { (void)bytes; }
};

} // namespace stellwyn::links
