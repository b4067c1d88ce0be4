#pragma once

#include "links/FtdiApi.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>

namespace stellwyn::linkstest {

// The D2XX calls for unit tests: a list of devices, a result to give per call, a log of every
// call with its arguments, and the bytes written to each handle.
class ScriptedFtdi final : public links::FtdiApi {
public:
    struct Device {
        QByteArray serialNumber;
        QByteArray description;
    };

    links::FT_STATUS FT_ListDevices(links::DWORD& numDevices, links::DWORD flags) override;
    links::FT_STATUS FT_ListDevices(links::DWORD index, QByteArray& buffer,
                                    links::DWORD flags) override;
    links::FT_STATUS FT_Open(int deviceNumber, links::FtHandle& handle) override;
    links::FT_STATUS FT_Close(links::FtHandle handle) override;
    links::FT_STATUS FT_SetBaudRate(links::FtHandle handle, links::DWORD baudRate) override;
    links::FT_STATUS FT_SetDataCharacteristics(links::FtHandle handle, std::uint8_t wordLength,
                                               std::uint8_t stopBits, std::uint8_t parity) override;
    links::FT_STATUS FT_SetFlowControl(links::FtHandle handle, std::uint16_t flowControl,
                                       std::uint8_t xonChar, std::uint8_t xoffChar) override;
    links::FT_STATUS FT_SetTimeouts(links::FtHandle handle, links::DWORD readTimeout,
                                    links::DWORD writeTimeout) override;
    links::FT_STATUS FT_SetEventNotification(links::FtHandle handle, links::DWORD mask,
                                             links::FtEvent event) override;
    links::FT_STATUS FT_SetResetPipeRetryCount(links::FtHandle handle, links::DWORD count) override;
    links::FT_STATUS FT_Write(links::FtHandle handle, const QByteArray& buffer, links::DWORD length,
                              links::DWORD& written) override;
    links::FT_STATUS FT_Read(links::FtHandle handle, QByteArray& buffer, links::DWORD toRead,
                             links::DWORD& bytesReturned) override;
    links::FT_STATUS FT_GetQueueStatus(links::FtHandle handle, links::DWORD& rxBytes) override;
    links::FT_STATUS FT_Purge(links::FtHandle handle, links::DWORD mask) override;
    links::FT_STATUS FT_GetStatus(links::FtHandle handle, links::DWORD& rxBytes,
                                  links::DWORD& txBytes, links::DWORD& eventStatus) override;
    links::FT_STATUS FT_GetModemStatus(links::FtHandle handle, links::DWORD& modemStatus) override;
    links::FtEvent CreateEventA(bool manualReset, bool initialState, const QString& name) override;

    QList<Device> devices;
    // A call named here returns this result instead of its own.
    QMap<QString, links::FT_STATUS> results;
    // The installed library lacks FT_SetResetPipeRetryCount.
    bool resetPipeMissing = false;
    // Every call, in order: its name and arguments, handles shown as h<n> in order of opening.
    QStringList calls;
    QMap<links::FtHandle, QByteArray> written;
    QSet<links::FtHandle> openHandles;
    int eventsCreated = 0;

private:
    links::FT_STATUS result(const QString& call, links::FT_STATUS own) const;
    links::FT_STATUS onHandle(const QString& call, links::FtHandle handle, const QString& args);
    QString nameOf(links::FtHandle handle) const;

    QList<links::FtHandle> opened_;
    // The device index each open handle holds.
    QMap<links::FtHandle, int> heldDevices_;
    links::FtHandle next_ = 0x1000;
};

} // namespace stellwyn::linkstest
