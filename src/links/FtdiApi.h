#pragma once

#include "core/FatalError.h"

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace stellwyn::links {

// The D2XX types as the program sees them. The library's DWORD and ULONG are 32 bits on every
// platform it ships for; its handles stay inside the backend, and the program holds a 32-bit
// number for each, as usbhandle and the netid table do.
using DWORD = std::uint32_t;
using FT_STATUS = std::uint32_t;
using FtHandle = std::int32_t;
using FtEvent = std::int32_t;

inline constexpr FT_STATUS FT_OK = 0;
inline constexpr FT_STATUS FT_INVALID_HANDLE = 1;
inline constexpr FT_STATUS FT_DEVICE_NOT_FOUND = 2;
inline constexpr FT_STATUS FT_DEVICE_NOT_OPENED = 3;
inline constexpr FT_STATUS FT_IO_ERROR = 4;
inline constexpr FT_STATUS FT_INVALID_PARAMETER = 6;
inline constexpr FT_STATUS FT_INVALID_BAUD_RATE = 7;
inline constexpr FT_STATUS FT_NOT_SUPPORTED = 17;
inline constexpr FT_STATUS FT_OTHER_ERROR = 18;

inline constexpr DWORD FT_LIST_NUMBER_ONLY = 0x80000000;
inline constexpr DWORD FT_LIST_BY_INDEX = 0x40000000;
inline constexpr DWORD FT_OPEN_BY_SERIAL_NUMBER = 1;
inline constexpr DWORD FT_OPEN_BY_DESCRIPTION = 2;

inline constexpr std::uint8_t FT_BITS_8 = 8;
inline constexpr std::uint8_t FT_BITS_7 = 7;
inline constexpr std::uint8_t FT_STOP_BITS_1 = 0;
inline constexpr std::uint8_t FT_STOP_BITS_2 = 2;
inline constexpr std::uint8_t FT_PARITY_NONE = 0;
inline constexpr std::uint8_t FT_PARITY_ODD = 1;
inline constexpr std::uint8_t FT_PARITY_EVEN = 2;
inline constexpr std::uint8_t FT_PARITY_MARK = 3;
inline constexpr std::uint8_t FT_PARITY_SPACE = 4;

inline constexpr std::uint16_t FT_FLOW_NONE = 0x0000;
inline constexpr std::uint16_t FT_FLOW_RTS_CTS = 0x0100;
inline constexpr std::uint16_t FT_FLOW_DTR_DSR = 0x0200;
inline constexpr std::uint16_t FT_FLOW_XON_XOFF = 0x0400;

inline constexpr DWORD FT_PURGE_RX = 1;
inline constexpr DWORD FT_PURGE_TX = 2;

inline constexpr DWORD FT_EVENT_RXCHAR = 1;
inline constexpr DWORD FT_EVENT_MODEM_STATUS = 2;

// Modem status bits of FT_GetModemStatus.
inline constexpr DWORD FT_MODEM_CTS = 0x10;
inline constexpr DWORD FT_MODEM_DSR = 0x20;
inline constexpr DWORD FT_MODEM_RI = 0x40;
inline constexpr DWORD FT_MODEM_DCD = 0x80;

// The size of a list answer: the longest description and its NUL fit.
inline constexpr int kFtListBufferSize = 64;

// A call the installed driver library does not have. Like any call that cannot be made at all,
// it ends the program unless the caller traps it, as the adapter's open does around the pipe
// retry count.
class FtdiCallMissing : public core::FatalError {
public:
    explicit FtdiCallMissing(const QString& call)
        : FatalError(QStringLiteral("The USB driver library has no entry point %1").arg(call)),
          call_(call) {}
    const QString& call() const { return call_; }

private:
    QString call_;
};

// FTD2XX: the calls of the FTDI driver library the program makes, under their names and with
// their results (FT_OK, 0, for success). Device indices count from 0; list answers go into a
// buffer of kFtListBufferSize bytes as a NUL-ended string.
class FtdiApi {
public:
    virtual ~FtdiApi() = default;

    // FT_LIST_NUMBER_ONLY: the number of devices.
    virtual FT_STATUS FT_ListDevices(DWORD& numDevices, DWORD flags) = 0;
    // FT_LIST_BY_INDEX with FT_OPEN_BY_SERIAL_NUMBER or FT_OPEN_BY_DESCRIPTION.
    virtual FT_STATUS FT_ListDevices(DWORD index, QByteArray& buffer, DWORD flags) = 0;
    virtual FT_STATUS FT_Open(int deviceNumber, FtHandle& handle) = 0;
    virtual FT_STATUS FT_Close(FtHandle handle) = 0;
    virtual FT_STATUS FT_SetBaudRate(FtHandle handle, DWORD baudRate) = 0;
    virtual FT_STATUS FT_SetDataCharacteristics(FtHandle handle, std::uint8_t wordLength,
                                                std::uint8_t stopBits, std::uint8_t parity) = 0;
    virtual FT_STATUS FT_SetFlowControl(FtHandle handle, std::uint16_t flowControl,
                                        std::uint8_t xonChar, std::uint8_t xoffChar) = 0;
    virtual FT_STATUS FT_SetTimeouts(FtHandle handle, DWORD readTimeout, DWORD writeTimeout) = 0;
    virtual FT_STATUS FT_SetEventNotification(FtHandle handle, DWORD mask, FtEvent event) = 0;
    virtual FT_STATUS FT_SetResetPipeRetryCount(FtHandle handle, DWORD count) = 0;
    // Sends the first `length` bytes of buffer.
    virtual FT_STATUS FT_Write(FtHandle handle, const QByteArray& buffer, DWORD length,
                               DWORD& written) = 0;
    // Waits up to the read timeout for `toRead` bytes; buffer holds what came.
    virtual FT_STATUS FT_Read(FtHandle handle, QByteArray& buffer, DWORD toRead,
                              DWORD& bytesReturned) = 0;
    virtual FT_STATUS FT_GetQueueStatus(FtHandle handle, DWORD& rxBytes) = 0;
    virtual FT_STATUS FT_Purge(FtHandle handle, DWORD mask) = 0;
    virtual FT_STATUS FT_GetStatus(FtHandle handle, DWORD& rxBytes, DWORD& txBytes,
                                   DWORD& eventStatus) = 0;
    virtual FT_STATUS FT_GetModemStatus(FtHandle handle, DWORD& modemStatus) = 0;

    // The event object handed to FT_SetEventNotification; 0 when none can be made. It belongs
    // here and not to the system because its form is the driver library's business.
    virtual FtEvent CreateEventA(bool manualReset, bool initialState, const QString& name) = 0;

    // True when bytes arriving on an open device wake the event loop by themselves, so that a
    // wait for a reply may sleep until they come; otherwise the wait must look at the queue
    // now and then.
    virtual bool wakesEventLoop() const { return false; }

    // The caller has no use for fewer than `bytes` more received bytes: a reply cannot be
    // complete before. A device that wakes the event loop for every byte lets them gather for
    // the time they take on the wire instead, as an adapter's latency timer holds bytes on the
    // chip, and then hands them over together; until then its queue reads empty. The bytes are
    // only held, never lost: a read or purge takes them at once.
    virtual void gatherReceived(FtHandle handle, int bytes) {
        (void)handle;
        (void)bytes;
    }
};

} // namespace stellwyn::links
