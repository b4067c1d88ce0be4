#pragma once

#include "links/FtdiApi.h"
#include "links/FtdiChannel.h"

#include <map>
#include <memory>

namespace stellwyn::links {

// The D2XX calls over devices that are byte pipes (a serial device of the system, a simulated
// bus): handles, argument checks, list answers and timeouts are kept here once, and a backend
// says only which devices there are and how one opens.
class ChannelFtdi : public FtdiApi {
public:
    FT_STATUS FT_ListDevices(DWORD& numDevices, DWORD flags) override;
    FT_STATUS FT_ListDevices(DWORD index, QByteArray& buffer, DWORD flags) override;
    FT_STATUS FT_Open(int deviceNumber, FtHandle& handle) override;
    FT_STATUS FT_Close(FtHandle handle) override;
    FT_STATUS FT_SetBaudRate(FtHandle handle, DWORD baudRate) override;
    FT_STATUS FT_SetDataCharacteristics(FtHandle handle, std::uint8_t wordLength,
                                        std::uint8_t stopBits, std::uint8_t parity) override;
    FT_STATUS FT_SetFlowControl(FtHandle handle, std::uint16_t flowControl, std::uint8_t xonChar,
                                std::uint8_t xoffChar) override;
    FT_STATUS FT_SetTimeouts(FtHandle handle, DWORD readTimeout, DWORD writeTimeout) override;
    // No waiting thread of ours needs the driver's event here, so arming it does nothing.
    FT_STATUS FT_SetEventNotification(FtHandle handle, DWORD mask, FtEvent event) override;
    // Retries on USB pipe errors are the driver's business below a serial device.
    FT_STATUS FT_SetResetPipeRetryCount(FtHandle handle, DWORD count) override;
    FT_STATUS FT_Write(FtHandle handle, const QByteArray& buffer, DWORD length,
                       DWORD& written) override;
    FT_STATUS FT_Read(FtHandle handle, QByteArray& buffer, DWORD toRead,
                      DWORD& bytesReturned) override;
    FT_STATUS FT_GetQueueStatus(FtHandle handle, DWORD& rxBytes) override;
    FT_STATUS FT_Purge(FtHandle handle, DWORD mask) override;
    FT_STATUS FT_GetStatus(FtHandle handle, DWORD& rxBytes, DWORD& txBytes,
                           DWORD& eventStatus) override;
    FT_STATUS FT_GetModemStatus(FtHandle handle, DWORD& modemStatus) override;
    FtEvent CreateEventA(bool manualReset, bool initialState, const QString& name) override;
    void gatherReceived(FtHandle handle, int bytes) override;

protected:
    virtual QList<FtdiDeviceInfo> devices() = 0;
    // Nothing when the device will not open.
    virtual std::unique_ptr<FtdiChannel> openChannel(int index) = 0;

private:
    struct OpenDevice {
        int index = 0;
        std::unique_ptr<FtdiChannel> channel;
        DWORD readTimeout = 0;
    };

    OpenDevice* find(FtHandle handle);

    std::map<FtHandle, OpenDevice> open_;
    // Handles start well above any NetID, so a network id handed to FT_Close by mistake is
    // refused rather than closing an adapter.
    FtHandle nextHandle_ = 0x1000;
    FtEvent nextEvent_ = 0x2000;
};

} // namespace stellwyn::links
