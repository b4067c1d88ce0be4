// A stand-in for FTDI's driver library, built by the tests as libftd2xx.so: the C calls the
// program loads at run time, over devices that the test describes, plus a few calls of its
// own (fakeftd2xx_*) through which the test steers it and reads what was written.
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <pthread.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using DWORD = std::uint32_t;
using FT_STATUS = std::uint32_t;

constexpr FT_STATUS kOk = 0;
constexpr FT_STATUS kInvalidHandle = 1;
constexpr FT_STATUS kDeviceNotFound = 2;
constexpr FT_STATUS kDeviceNotOpened = 3;
constexpr FT_STATUS kIoError = 4;
constexpr FT_STATUS kInvalidParameter = 6;
constexpr DWORD kListNumberOnly = 0x80000000;
constexpr DWORD kListByIndex = 0x40000000;
constexpr DWORD kBySerial = 1;
constexpr DWORD kByDescription = 2;

struct EventHandle {
    pthread_cond_t eCondVar;
    pthread_mutex_t eMutex;
    int iVar;
};

struct Device {
    std::string serial;
    std::string description;
    bool open = false;
    // Pulled from its socket: gone from the list, and its handle answers with an I/O error.
    bool present = true;
    std::string written;
    std::deque<char> received;
    EventHandle* event = nullptr;
    DWORD eventMask = 0;
};

std::vector<Device> devices;
// The devices as the bus lists them: one put back comes last.
std::vector<std::size_t> listed;
std::map<std::string, FT_STATUS> failures;
std::string callLog;

void log(const std::string& line) {
    callLog += line + ";";
}

FT_STATUS outcome(const char* call, FT_STATUS own) {
    const auto it = failures.find(call);
    return it == failures.end() ? own : it->second;
}

Device* deviceOf(void* handle) {
    for (Device& device : devices) {
        if (&device == handle && device.open) {
            return &device;
        }
    }
    return nullptr;
}

// A call on the line of an open device.
FT_STATUS lineOf(void* handle, Device*& device) {
    device = deviceOf(handle);
    if (device == nullptr) {
        return kInvalidHandle;
    }
    return device->present ? kOk : kIoError;
}

} // namespace

extern "C" {

// "SERIAL|Description;SERIAL|Description": the devices on the bus, all closed; forgets
// everything else.
void fakeftd2xx_setup(const char* script) {
    devices.clear();
    listed.clear();
    failures.clear();
    callLog.clear();
    std::stringstream all(script);
    std::string item;
    while (std::getline(all, item, ';')) {
        const auto bar = item.find('|');
        Device device;
        device.serial = item.substr(0, bar);
        device.description = bar == std::string::npos ? std::string() : item.substr(bar + 1);
        listed.push_back(devices.size());
        devices.push_back(device);
    }
}

void fakeftd2xx_unplug(int index) {
    Device& device = devices.at(static_cast<std::size_t>(index));
    device.present = false;
    device.received.clear();
    std::erase(listed, static_cast<std::size_t>(index));
}

void fakeftd2xx_plug(int index) {
    devices.at(static_cast<std::size_t>(index)).present = true;
    listed.push_back(static_cast<std::size_t>(index));
}

void fakeftd2xx_fail(const char* call, unsigned status) {
    failures[call] = status;
}

const char* fakeftd2xx_log() {
    return callLog.c_str();
}

unsigned fakeftd2xx_written(int index, char* out, unsigned size) {
    const std::string& written = devices.at(static_cast<std::size_t>(index)).written;
    const unsigned n = written.size() < size ? static_cast<unsigned>(written.size()) : size;
    std::memcpy(out, written.data(), n);
    return n;
}

// Bytes arriving from the line; the armed event is signalled as the driver does.
void fakeftd2xx_feed(int index, const char* bytes, unsigned n) {
    Device& device = devices.at(static_cast<std::size_t>(index));
    device.received.insert(device.received.end(), bytes, bytes + n);
    if (device.event != nullptr && (device.eventMask & 1) != 0) {
        pthread_mutex_lock(&device.event->eMutex);
        device.event->iVar = 1;
        pthread_cond_signal(&device.event->eCondVar);
        pthread_mutex_unlock(&device.event->eMutex);
    }
}

int fakeftd2xx_event_signalled(int index) {
    const EventHandle* event = devices.at(static_cast<std::size_t>(index)).event;
    return event != nullptr ? event->iVar : -1;
}

FT_STATUS FT_ListDevices(void* arg1, void* arg2, DWORD flags) {
    if (flags == kListNumberOnly) {
        log("FT_ListDevices count");
        *static_cast<DWORD*>(arg1) = static_cast<DWORD>(listed.size());
        return outcome("FT_ListDevices", kOk);
    }
    const auto index = static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(arg1));
    log("FT_ListDevices " + std::to_string(index) + " " + std::to_string(flags & 3));
    if ((flags & kListByIndex) == 0 || index >= listed.size()) {
        return kDeviceNotFound;
    }
    const Device& device = devices[listed[index]];
    const std::string& text = (flags & 3) == kBySerial        ? device.serial
                              : (flags & 3) == kByDescription ? device.description
                                                              : std::string();
    std::strcpy(static_cast<char*>(arg2), text.c_str());
    return outcome("FT_ListDevices", kOk);
}

FT_STATUS FT_Open(int index, void** handle) {
    log("FT_Open " + std::to_string(index));
    if (index < 0 || static_cast<std::size_t>(index) >= listed.size()) {
        return kDeviceNotFound;
    }
    Device& device = devices[listed[static_cast<std::size_t>(index)]];
    const FT_STATUS status = outcome("FT_Open", device.open ? kDeviceNotOpened : kOk);
    if (status == kOk) {
        device.open = true;
        *handle = &device;
    }
    return status;
}

FT_STATUS FT_Close(void* handle) {
    log("FT_Close");
    Device* device = deviceOf(handle);
    if (device == nullptr) {
        return kInvalidHandle;
    }
    device->open = false;
    device->event = nullptr;
    return kOk;
}

FT_STATUS FT_SetBaudRate(void* handle, DWORD baud) {
    log("FT_SetBaudRate " + std::to_string(baud));
    return deviceOf(handle) ? outcome("FT_SetBaudRate", kOk) : kInvalidHandle;
}

FT_STATUS FT_SetDataCharacteristics(void* handle, unsigned char bits, unsigned char stop,
                                    unsigned char parity) {
    log("FT_SetDataCharacteristics " + std::to_string(bits) + " " + std::to_string(stop) + " " +
        std::to_string(parity));
    return deviceOf(handle) ? outcome("FT_SetDataCharacteristics", kOk) : kInvalidHandle;
}

FT_STATUS FT_SetFlowControl(void* handle, unsigned short flow, unsigned char xon,
                            unsigned char xoff) {
    log("FT_SetFlowControl " + std::to_string(flow) + " " + std::to_string(xon) + " " +
        std::to_string(xoff));
    return deviceOf(handle) ? outcome("FT_SetFlowControl", kOk) : kInvalidHandle;
}

FT_STATUS FT_SetTimeouts(void* handle, DWORD readTimeout, DWORD writeTimeout) {
    log("FT_SetTimeouts " + std::to_string(readTimeout) + " " + std::to_string(writeTimeout));
    return deviceOf(handle) ? outcome("FT_SetTimeouts", kOk) : kInvalidHandle;
}

FT_STATUS FT_SetEventNotification(void* handle, DWORD mask, void* param) {
    log("FT_SetEventNotification " + std::to_string(mask) + (param ? " event" : " null"));
    Device* device = deviceOf(handle);
    if (device == nullptr) {
        return kInvalidHandle;
    }
    if (param == nullptr) {
        return kInvalidParameter;
    }
    device->event = static_cast<EventHandle*>(param);
    device->eventMask = mask;
    return kOk;
}

#ifndef FAKE_FTD2XX_WITHOUT_RESET_PIPE
FT_STATUS FT_SetResetPipeRetryCount(void* handle, DWORD count) {
    log("FT_SetResetPipeRetryCount " + std::to_string(count));
    return deviceOf(handle) ? outcome("FT_SetResetPipeRetryCount", kOk) : kInvalidHandle;
}
#endif

FT_STATUS FT_Write(void* handle, void* buffer, DWORD length, DWORD* written) {
    log("FT_Write " + std::to_string(length));
    Device* device = nullptr;
    if (const FT_STATUS status = lineOf(handle, device); status != kOk) {
        return status;
    }
    device->written.append(static_cast<const char*>(buffer), length);
    *written = length;
    return kOk;
}

FT_STATUS FT_Read(void* handle, void* buffer, DWORD toRead, DWORD* bytesReturned) {
    Device* device = nullptr;
    if (const FT_STATUS status = lineOf(handle, device); status != kOk) {
        return status;
    }
    DWORD n = 0;
    auto* out = static_cast<char*>(buffer);
    while (n < toRead && !device->received.empty()) {
        out[n++] = device->received.front();
        device->received.pop_front();
    }
    *bytesReturned = n;
    return kOk;
}

FT_STATUS FT_GetQueueStatus(void* handle, DWORD* rxBytes) {
    Device* device = nullptr;
    if (const FT_STATUS status = lineOf(handle, device); status != kOk) {
        return status;
    }
    *rxBytes = static_cast<DWORD>(device->received.size());
    return kOk;
}

FT_STATUS FT_Purge(void* handle, DWORD mask) {
    log("FT_Purge " + std::to_string(mask));
    Device* device = nullptr;
    if (const FT_STATUS status = lineOf(handle, device); status != kOk) {
        return status;
    }
    if ((mask & 1) != 0) {
        device->received.clear();
    }
    return kOk;
}

FT_STATUS FT_GetStatus(void* handle, DWORD* rxBytes, DWORD* txBytes, DWORD* eventStatus) {
    Device* device = nullptr;
    if (const FT_STATUS status = lineOf(handle, device); status != kOk) {
        return status;
    }
    *rxBytes = static_cast<DWORD>(device->received.size());
    *txBytes = 0;
    *eventStatus = 0;
    return kOk;
}

FT_STATUS FT_GetModemStatus(void* handle, DWORD* modemStatus) {
    if (deviceOf(handle) == nullptr) {
        return kInvalidHandle;
    }
    *modemStatus = 0x30;
    return kOk;
}

} // extern "C"
