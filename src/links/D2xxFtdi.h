#pragma once

#include "links/AdapterPresence.h"
#include "links/D2xxLibrary.h"
#include "links/FtdiApi.h"

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace stellwyn::links {

// FTDI's own driver library. Its handles are pointers; the program gets a number for each,
// and a number the library never gave (a network id handed to FT_Close) is refused here
// without reaching it. An adapter that the library says is gone is let go, looked for by its
// serial number, and opened again with the settings it had, under the same number.
class D2xxFtdi final : public FtdiApi {
public:
    // showStatus hears why the library did not load, at each use that fails for it; the
    // link's own message (no device) is the only box.
    D2xxFtdi(const QString& libraryPath, std::function<void(const QString&)> showStatus);
    ~D2xxFtdi() override;

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
    FT_STATUS FT_SetEventNotification(FtHandle handle, DWORD mask, FtEvent event) override;
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

private:
    struct Event;
    // A setting made on a device, made again on the device that comes back.
    using Setting = std::function<FT_STATUS(d2xx::Handle)>;
    struct OpenDevice {
        d2xx::Handle device = nullptr; // none while the adapter is away
        QByteArray serialNumber;
        AdapterPresence presence;
        std::vector<std::pair<const char*, Setting>> settings;
    };

    OpenDevice* find(FtHandle handle);
    // Runs a call of the library on an open device; see the class comment.
    FT_STATUS onDevice(FtHandle handle, const Setting& call);
    // Records the setting under its call's name, then makes it.
    FT_STATUS setting(FtHandle handle, const char* name, Setting call);
    bool reopen(OpenDevice& open);
    QByteArray serialNumberAt(DWORD index);

    D2xxLibrary library_;
    std::function<void(const QString&)> showStatus_;
    std::map<FtHandle, OpenDevice> handles_;
    std::map<FtEvent, std::unique_ptr<Event>> events_;
    // Well above any NetID, as in the other backends.
    FtHandle nextHandle_ = 0x1000;
    FtEvent nextEvent_ = 0x2000;
};

} // namespace stellwyn::links
