#pragma once

#include "core/Delays.h"

namespace stellwyn::core {
class Clock;
}

namespace stellwyn::acquisition {

// The wait for one reply on an addressed network: a quarter of a second from the moment it is
// made, never running across midnight.
class ReplyWait {
public:
    static constexpr double replySeconds = 0.25;

    // deviceWakes: the device's bytes wake the event loop, so the wait sleeps until they come
    // rather than looking at the queue every few milliseconds.
    ReplyWait(core::Clock& clock, bool deviceWakes);

    // More than the quarter second has run.
    bool over() const { return deadline_.passed(); }
    // The yield of the wait: events run, and the loop sleeps until bytes or a tick arrive or the
    // deadline comes, so a silent scale costs no processor.
    void yield();

private:
    core::Clock& clock_;
    core::Deadline deadline_;
    bool deviceWakes_;
};

} // namespace stellwyn::acquisition
