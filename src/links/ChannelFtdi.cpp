#include "links/ChannelFtdi.h"

#include "links/LinksLog.h"

#include <algorithm>
#include <cstring>

namespace stellwyn::links {

FT_STATUS ChannelFtdi::FT_ListDevices(DWORD& numDevices, DWORD flags) {
    if (flags != FT_LIST_NUMBER_ONLY) {
        return FT_INVALID_PARAMETER;
    }
    numDevices = static_cast<DWORD>(devices().size());
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_ListDevices(DWORD index, QByteArray& buffer, DWORD flags) {
    const bool bySerial = flags == (FT_LIST_BY_INDEX | FT_OPEN_BY_SERIAL_NUMBER);
    const bool byDescription = flags == (FT_LIST_BY_INDEX | FT_OPEN_BY_DESCRIPTION);
    if (!bySerial && !byDescription) {
        return FT_INVALID_PARAMETER;
    }
    const QList<FtdiDeviceInfo> list = devices();
    if (index >= static_cast<DWORD>(list.size())) {
        return FT_DEVICE_NOT_FOUND;
    }
    const FtdiDeviceInfo& info = list.at(static_cast<qsizetype>(index));
    const QByteArray text =
        (bySerial ? info.serialNumber : info.description).left(kFtListBufferSize - 1);
    buffer = QByteArray(kFtListBufferSize, '\0');
    std::memcpy(buffer.data(), text.constData(), static_cast<std::size_t>(text.size()));
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_Open(int deviceNumber, FtHandle& handle) {
    if (deviceNumber < 0 || deviceNumber >= devices().size()) {
        return FT_DEVICE_NOT_FOUND;
    }
    // One holder per device, as the driver has it, whoever we run as.
    const bool held = std::any_of(open_.begin(), open_.end(), [deviceNumber](const auto& entry) {
        return entry.second.index == deviceNumber;
    });
    if (held) {
        return FT_DEVICE_NOT_OPENED;
    }
    std::unique_ptr<FtdiChannel> channel = openChannel(deviceNumber);
    if (!channel) {
        return FT_DEVICE_NOT_OPENED;
    }
    handle = nextHandle_++;
    open_[handle] = OpenDevice{deviceNumber, std::move(channel), 0};
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_Close(FtHandle handle) {
    return open_.erase(handle) == 1 ? FT_OK : FT_INVALID_HANDLE;
}

FT_STATUS ChannelFtdi::FT_SetBaudRate(FtHandle handle, DWORD baudRate) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    return device->channel->setBaudRate(baudRate) ? FT_OK : FT_INVALID_BAUD_RATE;
}

FT_STATUS ChannelFtdi::FT_SetDataCharacteristics(FtHandle handle, std::uint8_t wordLength,
                                                 std::uint8_t stopBits, std::uint8_t parity) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    static constexpr char kParities[] = {'N', 'O', 'E', 'M', 'S'};
    const bool valid = (wordLength == FT_BITS_7 || wordLength == FT_BITS_8) &&
                       (stopBits == FT_STOP_BITS_1 || stopBits == FT_STOP_BITS_2) &&
                       parity <= FT_PARITY_SPACE;
    if (!valid) {
        return FT_INVALID_PARAMETER;
    }
    return device->channel->setFraming(wordLength, stopBits == FT_STOP_BITS_2 ? 2 : 1,
                                       kParities[parity])
               ? FT_OK
               : FT_IO_ERROR;
}

FT_STATUS ChannelFtdi::FT_SetFlowControl(FtHandle handle, std::uint16_t flowControl, std::uint8_t,
                                         std::uint8_t) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    return device->channel->setFlowControl(flowControl) ? FT_OK : FT_INVALID_PARAMETER;
}

FT_STATUS ChannelFtdi::FT_SetTimeouts(FtHandle handle, DWORD readTimeout, DWORD) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    // Writes never wait on these devices, so the write timeout has nothing to bound.
    device->readTimeout = readTimeout;
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_SetEventNotification(FtHandle handle, DWORD, FtEvent) {
    return find(handle) != nullptr ? FT_OK : FT_INVALID_HANDLE;
}

FT_STATUS ChannelFtdi::FT_SetResetPipeRetryCount(FtHandle handle, DWORD) {
    return find(handle) != nullptr ? FT_OK : FT_INVALID_HANDLE;
}

FT_STATUS ChannelFtdi::FT_Write(FtHandle handle, const QByteArray& buffer, DWORD length,
                                DWORD& written) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    if (length > static_cast<DWORD>(buffer.size())) {
        return FT_INVALID_PARAMETER;
    }
    const QByteArray bytes = buffer.left(static_cast<qsizetype>(length));
    qCDebug(lcFtdi, "handle %d sent %s", handle, bytes.toHex(' ').constData());
    device->channel->write(bytes);
    written = length;
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_Read(FtHandle handle, QByteArray& buffer, DWORD toRead,
                               DWORD& bytesReturned) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    // The wait is bounded whatever timeout was set: the one thread must come back to the
    // screen, and a short read is what a timeout gives anyway.
    buffer = device->channel->read(static_cast<qint64>(toRead),
                                   static_cast<int>(std::min<DWORD>(device->readTimeout, 60000)));
    bytesReturned = static_cast<DWORD>(buffer.size());
    if (!buffer.isEmpty()) {
        qCDebug(lcFtdi, "handle %d received %s", handle, buffer.toHex(' ').constData());
    }
    return FT_OK;
}

void ChannelFtdi::gatherReceived(FtHandle handle, int bytes) {
    if (OpenDevice* device = find(handle)) {
        device->channel->gather(bytes);
    }
}

FT_STATUS ChannelFtdi::FT_GetQueueStatus(FtHandle handle, DWORD& rxBytes) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    rxBytes = static_cast<DWORD>(device->channel->waiting());
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_Purge(FtHandle handle, DWORD mask) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    device->channel->purge((mask & FT_PURGE_RX) != 0, (mask & FT_PURGE_TX) != 0);
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_GetStatus(FtHandle handle, DWORD& rxBytes, DWORD& txBytes,
                                    DWORD& eventStatus) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    rxBytes = static_cast<DWORD>(device->channel->waiting());
    txBytes = static_cast<DWORD>(device->channel->toWrite());
    eventStatus = 0;
    return FT_OK;
}

FT_STATUS ChannelFtdi::FT_GetModemStatus(FtHandle handle, DWORD& modemStatus) {
    OpenDevice* device = find(handle);
    if (device == nullptr) {
        return FT_INVALID_HANDLE;
    }
    modemStatus = device->channel->modemStatus();
    return FT_OK;
}

FtEvent ChannelFtdi::CreateEventA(bool, bool, const QString&) {
    return nextEvent_++;
}

ChannelFtdi::OpenDevice* ChannelFtdi::find(FtHandle handle) {
    const auto it = open_.find(handle);
    return it == open_.end() ? nullptr : &it->second;
}

} // namespace stellwyn::links
