#pragma once

#include "FtdiApi.h"

#include <QString>
#include <functional>

namespace stellwyn::links {

// What the event thread is handed: the device it arms, the event it waits on, and the routines
// of the main screen it would call.
struct EventThreadJob {
    FtdiApi* ftdi = nullptr;
    FtHandle fthandle = 0;
    FtHandle usbhandle = 0;
    FtEvent fteventhandle = 0;
    // Waits on the event up to the milliseconds given: 0 signalled, 258 timed out, 128
    // abandoned, 0xFFFFFFFF failed.
    std::function<DWORD(FtEvent event, DWORD milliseconds)> WaitForSingleObject;
    std::function<void()> USB485_inputscan;
    std::function<void()> modemstatus;
};

// The one routine meant for a second thread: wait on the driver's receive event and run the
// USB input scan when bytes arrive. Reception never relies on it; the timers poll. Its run flag
// is its own, starts clear and is set by nothing, so a started thread tests it once and ends.
// Were the loop ever entered, it would call into the main screen from a second thread with no
// lock: nothing may be built on it. Returns the text the loop builds, which no screen shows.
QString eventthread(const EventThreadJob& job);

} // namespace stellwyn::links
