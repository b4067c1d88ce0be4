#include "ScriptedFtdi.h"

#include <cstring>

namespace stellwyn::linkstest {

using namespace links;

FT_STATUS ScriptedFtdi::result(const QString& call, FT_STATUS own) const {
    return results.value(call, own);
}

QString ScriptedFtdi::nameOf(FtHandle handle) const {
    const qsizetype at = opened_.indexOf(handle);
    return at < 0 ? QString::number(handle) : QStringLiteral("h%1").arg(at + 1);
}

FT_STATUS ScriptedFtdi::onHandle(const QString& call, FtHandle handle, const QString& args) {
    calls << call + u' ' + nameOf(handle) + (args.isEmpty() ? QString() : u' ' + args);
    return result(call, openHandles.contains(handle) ? FT_OK : FT_INVALID_HANDLE);
}

FT_STATUS ScriptedFtdi::FT_ListDevices(DWORD& numDevices, DWORD flags) {
    calls << QStringLiteral("FT_ListDevices count %1").arg(flags, 0, 16);
    numDevices = static_cast<DWORD>(devices.size());
    return result(QStringLiteral("FT_ListDevices count"), FT_OK);
}

FT_STATUS ScriptedFtdi::FT_ListDevices(DWORD index, QByteArray& buffer, DWORD flags) {
    calls << QStringLiteral("FT_ListDevices %1 %2").arg(index).arg(flags, 0, 16);
    const bool serial = (flags & FT_OPEN_BY_SERIAL_NUMBER) != 0;
    const FT_STATUS forced = result(serial ? QStringLiteral("FT_ListDevices serial")
                                           : QStringLiteral("FT_ListDevices description"),
                                    FT_OK);
    if (forced != FT_OK) {
        return forced;
    }
    if (index >= static_cast<DWORD>(devices.size()) || buffer.size() < kFtListBufferSize) {
        return FT_DEVICE_NOT_FOUND;
    }
    const Device& device = devices.at(index);
    const QByteArray text = serial ? device.serialNumber : device.description;
    buffer.fill('\0');
    std::memcpy(buffer.data(), text.constData(), static_cast<std::size_t>(text.size()));
    return FT_OK;
}

FT_STATUS ScriptedFtdi::FT_Open(int deviceNumber, FtHandle& handle) {
    calls << QStringLiteral("FT_Open %1").arg(deviceNumber);
    // As the library, a device held by an open handle is not opened a second time.
    FT_STATUS own = FT_OK;
    if (deviceNumber < 0 || deviceNumber >= devices.size()) {
        own = FT_DEVICE_NOT_FOUND;
    } else if (heldDevices_.values().contains(deviceNumber)) {
        own = FT_DEVICE_NOT_OPENED;
    }
    const FT_STATUS status = result(QStringLiteral("FT_Open"), own);
    if (status == FT_OK) {
        handle = next_++;
        opened_ << handle;
        openHandles.insert(handle);
        heldDevices_.insert(handle, deviceNumber);
    }
    return status;
}

FT_STATUS ScriptedFtdi::FT_Close(FtHandle handle) {
    const FT_STATUS status = onHandle(QStringLiteral("FT_Close"), handle, QString());
    openHandles.remove(handle);
    heldDevices_.remove(handle);
    return status;
}

FT_STATUS ScriptedFtdi::FT_SetBaudRate(FtHandle handle, DWORD baudRate) {
    return onHandle(QStringLiteral("FT_SetBaudRate"), handle, QString::number(baudRate));
}

FT_STATUS ScriptedFtdi::FT_SetDataCharacteristics(FtHandle handle, std::uint8_t wordLength,
                                                  std::uint8_t stopBits, std::uint8_t parity) {
    return onHandle(QStringLiteral("FT_SetDataCharacteristics"), handle,
                    QStringLiteral("%1 %2 %3").arg(wordLength).arg(stopBits).arg(parity));
}

FT_STATUS ScriptedFtdi::FT_SetFlowControl(FtHandle handle, std::uint16_t flowControl,
                                          std::uint8_t xonChar, std::uint8_t xoffChar) {
    return onHandle(QStringLiteral("FT_SetFlowControl"), handle,
                    QStringLiteral("%1 %2 %3").arg(flowControl).arg(xonChar).arg(xoffChar));
}

FT_STATUS ScriptedFtdi::FT_SetTimeouts(FtHandle handle, DWORD readTimeout, DWORD writeTimeout) {
    return onHandle(QStringLiteral("FT_SetTimeouts"), handle,
                    QStringLiteral("%1 %2").arg(readTimeout).arg(writeTimeout));
}

FT_STATUS ScriptedFtdi::FT_SetEventNotification(FtHandle handle, DWORD mask, FtEvent event) {
    return onHandle(QStringLiteral("FT_SetEventNotification"), handle,
                    QStringLiteral("%1 e%2").arg(mask).arg(event));
}

FT_STATUS ScriptedFtdi::FT_SetResetPipeRetryCount(FtHandle handle, DWORD count) {
    if (resetPipeMissing) {
        calls << QStringLiteral("FT_SetResetPipeRetryCount missing");
        throw FtdiCallMissing(QStringLiteral("FT_SetResetPipeRetryCount"));
    }
    return onHandle(QStringLiteral("FT_SetResetPipeRetryCount"), handle, QString::number(count));
}

FT_STATUS ScriptedFtdi::FT_Write(FtHandle handle, const QByteArray& buffer, DWORD length,
                                 DWORD& written_) {
    const FT_STATUS status = onHandle(QStringLiteral("FT_Write"), handle,
                                      QString::fromLatin1(buffer.left(length).toHex(' ')));
    if (openHandles.contains(handle)) {
        written[handle].append(buffer.left(length));
        written_ = length;
    }
    return status;
}

FT_STATUS ScriptedFtdi::FT_Read(FtHandle handle, QByteArray& buffer, DWORD, DWORD& bytesReturned) {
    buffer.clear();
    bytesReturned = 0;
    return onHandle(QStringLiteral("FT_Read"), handle, QString());
}

FT_STATUS ScriptedFtdi::FT_GetQueueStatus(FtHandle handle, DWORD& rxBytes) {
    rxBytes = 0;
    return onHandle(QStringLiteral("FT_GetQueueStatus"), handle, QString());
}

FT_STATUS ScriptedFtdi::FT_Purge(FtHandle handle, DWORD mask) {
    return onHandle(QStringLiteral("FT_Purge"), handle, QString::number(mask));
}

FT_STATUS ScriptedFtdi::FT_GetStatus(FtHandle handle, DWORD& rxBytes, DWORD& txBytes,
                                     DWORD& eventStatus) {
    rxBytes = txBytes = eventStatus = 0;
    return onHandle(QStringLiteral("FT_GetStatus"), handle, QString());
}

FT_STATUS ScriptedFtdi::FT_GetModemStatus(FtHandle handle, DWORD& modemStatus) {
    modemStatus = 0;
    return onHandle(QStringLiteral("FT_GetModemStatus"), handle, QString());
}

FtEvent ScriptedFtdi::CreateEventA(bool manualReset, bool initialState, const QString& name) {
    ++eventsCreated;
    calls << QStringLiteral("CreateEventA %1 %2 \"%3\"")
                 .arg(manualReset ? 1 : 0)
                 .arg(initialState ? 1 : 0)
                 .arg(name);
    return 0x2000 + eventsCreated;
}

} // namespace stellwyn::linkstest
