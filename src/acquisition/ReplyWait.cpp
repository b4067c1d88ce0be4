#include "ReplyWait.h"

#include "core/Clock.h"

#include <algorithm>

namespace stellwyn::acquisition {

namespace {
// A yield always lets a little time pass, so that a wait standing exactly at its deadline
// still moves on past it.
constexpr double shortestYield = 0.001;
// How often the queue of a device that cannot wake the loop is looked at.
constexpr double lookEvery = 0.010;
} // namespace

ReplyWait::ReplyWait(core::Clock& clock, bool deviceWakes)
    : clock_(clock), deadline_(clock, replySeconds), deviceWakes_(deviceWakes) {}

void ReplyWait::yield() {
    const double remaining = deadline_.remaining();
    clock_.waitForEvents(
        std::max(shortestYield, deviceWakes_ ? remaining : std::min(remaining, lookEvery)));
}

} // namespace stellwyn::acquisition
