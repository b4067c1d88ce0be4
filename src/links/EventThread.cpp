#include "EventThread.h"

namespace stellwyn::links {

namespace {
constexpr DWORD kWaitFailed = 0xFFFFFFFF;
constexpr DWORD kWaitAbandoned = 128;
constexpr DWORD kWaitTimedOut = 258;
constexpr DWORD kWaitMs = 1000;
} // namespace

QString eventthread(const EventThreadJob& job) {
    bool run = false;
    QString text;
    while (run) {
        if (job.ftdi->FT_SetEventNotification(job.fthandle, FT_EVENT_RXCHAR | FT_EVENT_MODEM_STATUS,
                                              job.fteventhandle) != FT_OK) {
            continue;
        }
        const DWORD result = job.WaitForSingleObject(job.fteventhandle, kWaitMs);
        DWORD rxBytes = 0;
        DWORD txBytes = 0;
        DWORD eventStatus = 0;
        job.ftdi->FT_GetStatus(job.usbhandle, rxBytes, txBytes, eventStatus);
        job.USB485_inputscan();
        text = QStringLiteral("Thread is finished. Result of wait: ") +
               QString::number(static_cast<qint64>(static_cast<std::int32_t>(result)));
        if (result == kWaitFailed) {
            text += QStringLiteral("\nWait Failed");
        } else if (result == kWaitAbandoned) {
            text += QStringLiteral("\nWait was Abandond");
        } else if (result == kWaitTimedOut) {
            text += QStringLiteral("\nWait Timed Out");
        } else {
            text = QStringLiteral("Modem status event");
            job.modemstatus();
        }
    }
    return text;
}

} // namespace stellwyn::links
