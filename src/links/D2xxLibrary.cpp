#include "links/D2xxLibrary.h"

#include <dlfcn.h>

namespace stellwyn::links {

D2xxLibrary::D2xxLibrary(const QString& path) : path_(path) {
    handle_ = dlopen(path.toLocal8Bit().constData(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* why = dlerror();
        error_ = why != nullptr ? QString::fromLocal8Bit(why) : QStringLiteral("unknown reason");
    }
}

D2xxLibrary::~D2xxLibrary() {
    if (handle_ != nullptr) {
        dlclose(handle_);
    }
}

void* D2xxLibrary::symbol(const char* name) const {
    void* address = handle_ != nullptr ? dlsym(handle_, name) : nullptr;
    if (address == nullptr) {
        throw FtdiCallMissing(QString::fromLatin1(name));
    }
    return address;
}

} // namespace stellwyn::links
