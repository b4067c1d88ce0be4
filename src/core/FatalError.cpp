#include "core/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace stellwyn::core {

namespace {
// Process-wide by nature: whichever handler meets the error, the process ends the same way.
std::function<void(const QString&)>& fatalErrorHandler() {
    static std::function<void(const QString&)> handler;
    return handler;
}
} // namespace

void setFatalErrorHandler(std::function<void(const QString& text)> handler) {
    fatalErrorHandler() = std::move(handler);
}

void endWithFatalError(const QString& text) {
    if (const auto& handler = fatalErrorHandler()) {
        handler(text);
    } else {
        std::fprintf(stderr, "fatal: %s\n", qPrintable(text));
    }
    std::fflush(nullptr);
    std::_Exit(1);
}

} // namespace stellwyn::core
