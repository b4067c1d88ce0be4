#include "Yield.h"

#include <QCoreApplication>

namespace stellwyn::core {

void yieldToEvents() {
    if (QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
    }
}

void usePlainEventLoop() {
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) {
        qputenv("QT_NO_GLIB", "1");
    }
}

} // namespace stellwyn::core
