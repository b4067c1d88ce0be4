#include "QtTimerDriver.h"

#include "core/Controls.h"
#include "core/FatalError.h"

namespace stellwyn::acquisition {

QtTimerDriver::QtTimerDriver(QObject* parent) : QObject(parent) {}

QtTimerDriver::~QtTimerDriver() {
    for (Driven* d : driven_) {
        d->state->Changed = nullptr;
        delete d;
    }
}

void QtTimerDriver::drive(core::Timer& timer) {
    auto* d = new Driven{&timer, new QTimer(this), -1};
    d->timer->setTimerType(Qt::PreciseTimer);
    driven_.push_back(d);
    connect(d->timer, &QTimer::timeout, this, [d] {
        if (d->state->Tick) {
            core::runHandler(d->state->Tick);
        }
    });
    timer.Changed = [this, d] { follow(*d); };
    follow(*d);
}

void QtTimerDriver::follow(Driven& d) {
    if (!d.state->running()) {
        d.timer->stop();
        d.lastInterval = -1;
        return;
    }
    const int interval = d.state->interval();
    if (!d.timer->isActive() || interval != d.lastInterval) {
        d.timer->start(interval);
        d.lastInterval = interval;
    }
}

} // namespace stellwyn::acquisition
