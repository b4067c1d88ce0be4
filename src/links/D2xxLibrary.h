#pragma once

#include "links/FtdiApi.h"

#include <QString>

namespace stellwyn::links {

// Our own declarations of the driver library's calls, as its Linux build exports them: C
// calls, handles as pointers, DWORD and ULONG as 32 bits.
namespace d2xx {
using Handle = void*;
using ListDevices = FT_STATUS (*)(void*, void*, DWORD);
using Open = FT_STATUS (*)(int, Handle*);
using Close = FT_STATUS (*)(Handle);
using SetBaudRate = FT_STATUS (*)(Handle, DWORD);
using SetDataCharacteristics = FT_STATUS (*)(Handle, unsigned char, unsigned char, unsigned char);
using SetFlowControl = FT_STATUS (*)(Handle, unsigned short, unsigned char, unsigned char);
using SetTimeouts = FT_STATUS (*)(Handle, DWORD, DWORD);
using SetEventNotification = FT_STATUS (*)(Handle, DWORD, void*);
using SetResetPipeRetryCount = FT_STATUS (*)(Handle, DWORD);
using Write = FT_STATUS (*)(Handle, void*, DWORD, DWORD*);
using Read = FT_STATUS (*)(Handle, void*, DWORD, DWORD*);
using GetQueueStatus = FT_STATUS (*)(Handle, DWORD*);
using Purge = FT_STATUS (*)(Handle, DWORD);
using GetStatus = FT_STATUS (*)(Handle, DWORD*, DWORD*, DWORD*);
using GetModemStatus = FT_STATUS (*)(Handle, DWORD*);
} // namespace d2xx

// The driver library, loaded when the program runs, so that a machine without it still
// starts. A call it lacks is told by FtdiCallMissing when the call is made.
class D2xxLibrary {
public:
    explicit D2xxLibrary(const QString& path);
    ~D2xxLibrary();
    D2xxLibrary(const D2xxLibrary&) = delete;
    D2xxLibrary& operator=(const D2xxLibrary&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    const QString& path() const { return path_; }
    // Why the library did not load.
    const QString& errorString() const { return error_; }

    // The entry point named `name`, of the given type; throws FtdiCallMissing when absent.
    template <typename Fn> Fn call(const char* name) const {
        return reinterpret_cast<Fn>(symbol(name));
    }

private:
    void* symbol(const char* name) const;

    QString path_;
    QString error_;
    void* handle_ = nullptr;
};

} // namespace stellwyn::links
