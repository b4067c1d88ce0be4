#include "StellwynApplication.h"

#include "core/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace stellwyn::app {

StellwynApplication::StellwynApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void StellwynApplication::setFatalHandler(std::function<void(const QString&)> handler) {
    fatalHandler_ = std::move(handler);
}

bool StellwynApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const core::FatalError& error) {
        fatal(error.text());
    } catch (const std::exception& error) {
        fatal(QString::fromLocal8Bit(error.what()));
    }
}

void StellwynApplication::fatal(const QString& text) {
    if (fatalHandler_) {
        fatalHandler_(text);
    } else {
        std::fprintf(stderr, "fatal: %s\n", qPrintable(text));
    }
    std::fflush(nullptr);
    // Everything stored is already on disk; nothing on the way out may run any more code that
    // could touch the state the error left behind.
    std::_Exit(1);
}

} // namespace stellwyn::app
