#include "links/D2xxFtdi.h"

#include "links/LinksLog.h"

#include <cstdint>
#include <cstring>
#include <pthread.h>

namespace stellwyn::links {

// The event the library's Linux build signals: our declaration of its EVENT_HANDLE.
struct D2xxFtdi::Event {
    pthread_cond_t eCondVar;
    pthread_mutex_t eMutex;
    int iVar;

    Event() : iVar(0) {
        pthread_cond_init(&eCondVar, nullptr);
        pthread_mutex_init(&eMutex, nullptr);
    }
    ~Event() {
        pthread_cond_destroy(&eCondVar);
        pthread_mutex_destroy(&eMutex);
    }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
};

D2xxFtdi::D2xxFtdi(const QString& libraryPath, std::function<void(const QString&)> showStatus)
    : library_(libraryPath), showStatus_(std::move(showStatus)) {}

D2xxFtdi::~D2xxFtdi() {
    // Devices go before the events they may still signal.
    for (const auto& [handle, open] : handles_) {
        if (open.device == nullptr) {
            continue;
        }
        try {
            library_.call<d2xx::Close>("FT_Close")(open.device);
        } catch (const FtdiCallMissing&) {
            break;
        }
    }
}

FT_STATUS D2xxFtdi::FT_ListDevices(DWORD& numDevices, DWORD flags) {
    if (!library_.loaded()) {
        // Told at each attempt to use the adapter, since each one fails for this reason; the
        // link says "no device" in its own box.
        const QString why = QStringLiteral("The USB driver library %1 could not be loaded (%2). "
                                           "No USB device can be used until it is installed.")
                                .arg(library_.path(), library_.errorString());
        qCWarning(lcFtdi).noquote() << why;
        if (showStatus_) {
            showStatus_(why);
        }
        numDevices = 0;
        return FT_DEVICE_NOT_FOUND;
    }
    return library_.call<d2xx::ListDevices>("FT_ListDevices")(&numDevices, nullptr, flags);
}

FT_STATUS D2xxFtdi::FT_ListDevices(DWORD index, QByteArray& buffer, DWORD flags) {
    if (!library_.loaded()) {
        return FT_DEVICE_NOT_FOUND;
    }
    buffer = QByteArray(kFtListBufferSize, '\0');
    // By index, the library takes the index itself in place of the first pointer.
    void* indexArgument = reinterpret_cast<void*>( // NOLINT(performance-no-int-to-ptr)
        static_cast<std::uintptr_t>(index));
    return library_.call<d2xx::ListDevices>("FT_ListDevices")(indexArgument, buffer.data(), flags);
}

FT_STATUS D2xxFtdi::FT_Open(int deviceNumber, FtHandle& handle) {
    if (!library_.loaded()) {
        return FT_DEVICE_NOT_FOUND;
    }
    // The serial number names the adapter should it be pulled out and come back elsewhere on
    // the bus; it can only be listed while the device is still closed.
    const QByteArray serialNumber = serialNumberAt(static_cast<DWORD>(deviceNumber));
    d2xx::Handle opened = nullptr;
    const FT_STATUS status = library_.call<d2xx::Open>("FT_Open")(deviceNumber, &opened);
    if (status == FT_OK) {
        handle = nextHandle_++;
        handles_.emplace(handle,
                         OpenDevice{opened,
                                    serialNumber,
                                    AdapterPresence(QString::fromLatin1(serialNumber), showStatus_),
                                    {}});
    }
    return status;
}

FT_STATUS D2xxFtdi::FT_Close(FtHandle handle) {
    OpenDevice* open = find(handle);
    if (open == nullptr) {
        return FT_INVALID_HANDLE;
    }
    // An adapter that is away was let go already.
    const FT_STATUS status =
        open->device == nullptr ? FT_OK : library_.call<d2xx::Close>("FT_Close")(open->device);
    if (status == FT_OK) {
        handles_.erase(handle);
    }
    return status;
}

FT_STATUS D2xxFtdi::FT_SetBaudRate(FtHandle handle, DWORD baudRate) {
    return setting(handle, "FT_SetBaudRate", [this, baudRate](d2xx::Handle device) {
        return library_.call<d2xx::SetBaudRate>("FT_SetBaudRate")(device, baudRate);
    });
}

FT_STATUS D2xxFtdi::FT_SetDataCharacteristics(FtHandle handle, std::uint8_t wordLength,
                                              std::uint8_t stopBits, std::uint8_t parity) {
    return setting(handle, "FT_SetDataCharacteristics", [=, this](d2xx::Handle device) {
        return library_.call<d2xx::SetDataCharacteristics>("FT_SetDataCharacteristics")(
            device, wordLength, stopBits, parity);
    });
}

FT_STATUS D2xxFtdi::FT_SetFlowControl(FtHandle handle, std::uint16_t flowControl,
                                      std::uint8_t xonChar, std::uint8_t xoffChar) {
    return setting(handle, "FT_SetFlowControl", [=, this](d2xx::Handle device) {
        return library_.call<d2xx::SetFlowControl>("FT_SetFlowControl")(device, flowControl,
                                                                        xonChar, xoffChar);
    });
}

FT_STATUS D2xxFtdi::FT_SetTimeouts(FtHandle handle, DWORD readTimeout, DWORD writeTimeout) {
    return setting(handle, "FT_SetTimeouts", [=, this](d2xx::Handle device) {
        return library_.call<d2xx::SetTimeouts>("FT_SetTimeouts")(device, readTimeout,
                                                                  writeTimeout);
    });
}

FT_STATUS D2xxFtdi::FT_SetEventNotification(FtHandle handle, DWORD mask, FtEvent event) {
    if (find(handle) == nullptr) {
        return FT_INVALID_HANDLE;
    }
    const auto it = events_.find(event);
    if (it == events_.end()) {
        return FT_INVALID_PARAMETER;
    }
    Event* armed = it->second.get();
    return setting(handle, "FT_SetEventNotification", [this, mask, armed](d2xx::Handle device) {
        return library_.call<d2xx::SetEventNotification>("FT_SetEventNotification")(device, mask,
                                                                                    armed);
    });
}

FT_STATUS D2xxFtdi::FT_SetResetPipeRetryCount(FtHandle handle, DWORD count) {
    return setting(handle, "FT_SetResetPipeRetryCount", [this, count](d2xx::Handle device) {
        return library_.call<d2xx::SetResetPipeRetryCount>("FT_SetResetPipeRetryCount")(device,
                                                                                        count);
    });
}

FT_STATUS D2xxFtdi::FT_Write(FtHandle handle, const QByteArray& buffer, DWORD length,
                             DWORD& written) {
    if (find(handle) != nullptr && length > static_cast<DWORD>(buffer.size())) {
        return FT_INVALID_PARAMETER;
    }
    return onDevice(handle, [&](d2xx::Handle device) {
        QByteArray bytes = buffer;
        qCDebug(lcFtdi, "handle %d sent %s", handle,
                bytes.left(static_cast<qsizetype>(length)).toHex(' ').constData());
        return library_.call<d2xx::Write>("FT_Write")(device, bytes.data(), length, &written);
    });
}

FT_STATUS D2xxFtdi::FT_Read(FtHandle handle, QByteArray& buffer, DWORD toRead,
                            DWORD& bytesReturned) {
    bytesReturned = 0;
    return onDevice(handle, [&](d2xx::Handle device) {
        buffer = QByteArray(static_cast<qsizetype>(toRead), '\0');
        const FT_STATUS status =
            library_.call<d2xx::Read>("FT_Read")(device, buffer.data(), toRead, &bytesReturned);
        buffer.truncate(static_cast<qsizetype>(qMin(bytesReturned, toRead)));
        if (!buffer.isEmpty()) {
            qCDebug(lcFtdi, "handle %d received %s", handle, buffer.toHex(' ').constData());
        }
        return status;
    });
}

FT_STATUS D2xxFtdi::FT_GetQueueStatus(FtHandle handle, DWORD& rxBytes) {
    return onDevice(handle, [&](d2xx::Handle device) {
        return library_.call<d2xx::GetQueueStatus>("FT_GetQueueStatus")(device, &rxBytes);
    });
}

FT_STATUS D2xxFtdi::FT_Purge(FtHandle handle, DWORD mask) {
    return onDevice(handle, [&](d2xx::Handle device) {
        return library_.call<d2xx::Purge>("FT_Purge")(device, mask);
    });
}

FT_STATUS D2xxFtdi::FT_GetStatus(FtHandle handle, DWORD& rxBytes, DWORD& txBytes,
                                 DWORD& eventStatus) {
    return onDevice(handle, [&](d2xx::Handle device) {
        return library_.call<d2xx::GetStatus>("FT_GetStatus")(device, &rxBytes, &txBytes,
                                                              &eventStatus);
    });
}

FT_STATUS D2xxFtdi::FT_GetModemStatus(FtHandle handle, DWORD& modemStatus) {
    return onDevice(handle, [&](d2xx::Handle device) {
        return library_.call<d2xx::GetModemStatus>("FT_GetModemStatus")(device, &modemStatus);
    });
}

FtEvent D2xxFtdi::CreateEventA(bool, bool, const QString&) {
    // The library's event is auto-reset and starts unsignalled, which is what is asked for.
    const FtEvent event = nextEvent_++;
    events_[event] = std::make_unique<Event>();
    return event;
}

D2xxFtdi::OpenDevice* D2xxFtdi::find(FtHandle handle) {
    const auto it = handles_.find(handle);
    return it == handles_.end() ? nullptr : &it->second;
}

FT_STATUS D2xxFtdi::onDevice(FtHandle handle, const Setting& call) {
    OpenDevice* open = find(handle);
    if (open == nullptr) {
        return FT_INVALID_HANDLE;
    }
    if (open->presence.away() && !open->presence.tryBack([&] { return reopen(*open); })) {
        // What the library itself answers for a device that is not there.
        return FT_IO_ERROR;
    }
    const FT_STATUS status = call(open->device);
    // The library's answers for a device pulled from its socket: its handle is dead, and the
    // adapter can only come back through a new open.
    if (status == FT_IO_ERROR || status == FT_DEVICE_NOT_FOUND) {
        library_.call<d2xx::Close>("FT_Close")(open->device);
        open->device = nullptr;
        open->presence.lost();
    }
    return status;
}

FT_STATUS D2xxFtdi::setting(FtHandle handle, const char* name, Setting call) {
    OpenDevice* open = find(handle);
    if (open == nullptr) {
        return FT_INVALID_HANDLE;
    }
    const auto same = [name](const auto& made) { return std::strcmp(made.first, name) == 0; };
    std::erase_if(open->settings, same);
    open->settings.emplace_back(name, call);
    return onDevice(handle, call);
}

bool D2xxFtdi::reopen(OpenDevice& open) {
    if (open.serialNumber.isEmpty()) {
        return false;
    }
    DWORD count = 0;
    if (library_.call<d2xx::ListDevices>("FT_ListDevices")(&count, nullptr, FT_LIST_NUMBER_ONLY) !=
        FT_OK) {
        return false;
    }
    for (DWORD index = 0; index < count; ++index) {
        if (serialNumberAt(index) != open.serialNumber) {
            continue;
        }
        d2xx::Handle opened = nullptr;
        if (library_.call<d2xx::Open>("FT_Open")(static_cast<int>(index), &opened) != FT_OK) {
            return false;
        }
        open.device = opened;
        for (const auto& [name, made] : open.settings) {
            try {
                made(opened);
            } catch (const FtdiCallMissing&) {
                // Told once when the adapter was first opened; it works without.
            }
        }
        return true;
    }
    return false;
}

QByteArray D2xxFtdi::serialNumberAt(DWORD index) {
    QByteArray buffer;
    if (FT_ListDevices(index, buffer, FT_LIST_BY_INDEX | FT_OPEN_BY_SERIAL_NUMBER) != FT_OK) {
        return {};
    }
    return QByteArray(buffer.constData()); // up to its NUL
}

} // namespace stellwyn::links
