#include "StellwynApplication.h"

#include "core/FatalError.h"

namespace stellwyn::app {

StellwynApplication::StellwynApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void StellwynApplication::setFatalHandler(std::function<void(const QString&)> handler) {
    core::setFatalErrorHandler(std::move(handler));
}

void StellwynApplication::fatal(const QString& text) {
    core::endWithFatalError(text);
}

} // namespace stellwyn::app
