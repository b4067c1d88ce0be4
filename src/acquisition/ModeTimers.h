#pragma once

#include <QString>
#include <array>
#include <cstdint>

namespace stellwyn::acquisition {

struct AcquisitionContext;
class Scanners;

// The operating modes of the main screen and the timers that do all acquisition: the ten
// chained Timer1 elements of a network pass, Timer2 calling the scanner in single mode,
// Timer4 sending the poll request, Timer3 kept for a key path nothing enables.
class ModeTimers {
public:
    ModeTimers(AcquisitionContext& context, Scanners& scanners);

    // Attaches the handlers of the timers and of the mode controls to the screen's controls.
    void attach();

    void setmode(int mode);
    void Timer1_Timer(int index);
    void Timer2_Timer();
    void Timer3_Timer();
    void Timer4_Timer();
    void halttimers();
    void restarttimers();
    void net_stat_get();
    void net_stat_put();
    void chk_pollenb_Click();
    void opt_network_Click();
    void opt_single_Click();
    void Combo1_Click();

    // txt_polltime in milliseconds; text that is not a number, or a period no timer can
    // hold, is the fatal error.
    int pollInterval() const;

private:
    bool screenClosed() const;
    bool networkLink() const;
    char readingCode() const;
    void sendPendingKey();
    void passUsb();
    void passRs485();
    void passUsb485();
    void netdelWait();
    void keepIntervals(bool disable);

    AcquisitionContext& c_;
    Scanners& scanners_;
    std::array<std::int16_t, 16> savedIntervals_{};
    bool savedSingle_ = false;
    bool savedNetwork_ = false;
    int savedPoll_ = 0;
};

} // namespace stellwyn::acquisition
