#include "VirtualTimers.h"

#include "core/Clock.h"
#include "core/Controls.h"

#include <QCoreApplication>

namespace stellwyn::testsupport {

VirtualTimers::VirtualTimers(core::VirtualClock& clock)
    : clock_(clock), listenerKey_(clock.addAdvanceListener([this] { scheduleDue(); })) {}

VirtualTimers::~VirtualTimers() {
    clock_.removeAdvanceListener(listenerKey_);
    for (Driven* d : driven_) {
        d->state->Changed = nullptr;
        delete d;
    }
}

void VirtualTimers::drive(core::Timer& timer) {
    auto* d = new Driven{&timer};
    driven_.push_back(d);
    timer.Changed = [this, d] { follow(*d); };
    follow(*d);
}

void VirtualTimers::follow(Driven& d) {
    if (!d.state->running()) {
        d.armed = false;
        return;
    }
    if (!d.armed || d.interval != d.state->interval()) {
        d.armed = true;
        d.interval = d.state->interval();
        d.due = clock_.elapsed() + d.interval / 1000.0;
    }
}

void VirtualTimers::scheduleDue() {
    if (delivery_) {
        return;
    }
    for (const Driven* d : driven_) {
        if (d->armed && !d->inHandler && clock_.elapsed() + 1e-9 >= d->due) {
            delivery_ = true;
            QMetaObject::invokeMethod(
                &anchor_, [this] { fireDue(); }, Qt::QueuedConnection);
            return;
        }
    }
}

void VirtualTimers::fireDue() {
    delivery_ = false;
    for (std::size_t i = 0; i < driven_.size(); ++i) {
        Driven& d = *driven_[i];
        if (!d.armed || d.inHandler || clock_.elapsed() + 1e-9 < d.due) {
            continue;
        }
        d.due = clock_.elapsed() + d.interval / 1000.0;
        d.inHandler = true;
        if (d.state->Tick) {
            d.state->Tick();
        }
        d.inHandler = false;
    }
}

void VirtualTimers::runFor(double seconds) {
    const double end = clock_.elapsed() + seconds;
    while (clock_.elapsed() + 1e-9 < end) {
        clock_.advance(0.001);
        QCoreApplication::processEvents();
    }
}

} // namespace stellwyn::testsupport
