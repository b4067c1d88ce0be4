#include "ReplyWait.h"

#include "core/Clock.h"

#include <algorithm>

namespace stellwyn::acquisition {

namespace {
// A yield always lets a little time pass, so that a wait standing exactly at its deadline
// still moves on past it.
constexpr double shortestYield = 0.001;
} // namespace

ReplyWait::ReplyWait(core::Clock& clock) : clock_(clock), deadline_(clock, replySeconds) {}

void ReplyWait::yield() {
    clock_.waitForEvents(std::max(shortestYield, deadline_.remaining()));
}

} // namespace stellwyn::acquisition
