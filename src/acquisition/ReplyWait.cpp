#include "ReplyWait.h"

#include "core/Clock.h"
#include "core/Delays.h"

#include <algorithm>

namespace stellwyn::acquisition {

namespace {
// A yield always lets a little time pass, so that a wait standing exactly at its deadline
// still moves on to it.
constexpr double shortestYield = 0.001;
} // namespace

ReplyWait::ReplyWait(core::Clock& clock)
    : clock_(clock), deadline_(core::guardedStart(clock, replySeconds) + replySeconds) {}

bool ReplyWait::over() const {
    return clock_.timeOfDay() > deadline_;
}

void ReplyWait::yield() {
    clock_.waitForEvents(std::max(shortestYield, deadline_ - clock_.timeOfDay()));
}

} // namespace stellwyn::acquisition
