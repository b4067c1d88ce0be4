#pragma once

namespace stellwyn::core {
class Clock;
}

namespace stellwyn::acquisition {

// The wait for one reply on an addressed network: a quarter of a second from the moment it is
// made, never running across midnight, where the time of day falls back to 0 and the deadline
// would never come.
class ReplyWait {
public:
    static constexpr double replySeconds = 0.25;

    explicit ReplyWait(core::Clock& clock);

    // The time of day has passed the deadline.
    bool over() const;
    // The yield of the wait: events run, and the loop sleeps until bytes or a tick arrive or the
    // deadline comes, so a silent scale costs no processor.
    void yield();

private:
    core::Clock& clock_;
    double deadline_;
};

} // namespace stellwyn::acquisition
