#include "Yield.h"

#include <QCoreApplication>

namespace stellwyn::core {

void yieldToEvents() {
    if (QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
    }
}

} // namespace stellwyn::core
