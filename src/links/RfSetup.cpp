#include "RfSetup.h"

#include "FtdiApi.h"
#include "core/Clock.h"
#include "core/Delays.h"
#include "core/Dialogs.h"
#include "core/Module1.h"

#include <QStringList>

namespace stellwyn::links {

namespace {
constexpr double kAnswerLimit = 2.0;
// How long the wait blocks between two looks at the receive queue: short beside the module's
// answer, long enough that the wait does not spin.
constexpr double kQueueLook = 0.005;
constexpr DWORD kAnswerBytes = 3;
} // namespace

QByteArray rfChannelDigits(const QString& rfnetid) {
    static const QStringList channels{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"),
                                      QStringLiteral("3"), QStringLiteral("4"), QStringLiteral("5"),
                                      QStringLiteral("6")};
    if (!channels.contains(rfnetid)) {
        return {};
    }
    return QByteArray("0") + rfnetid.toLatin1();
}

void rf_setup(core::Module1& m, FtdiApi* ftdi, core::Dialogs& dialogs, core::Clock& clock) {
    // The module's own escape: no guard silence is kept around it, and its reply is not read
    // for content, only counted. The limit keeps no midnight guard: it never had one.
    const core::Deadline deadline(clock, kAnswerLimit, core::MidnightGuard::None);
    const QByteArray escape("+++");
    DWORD written = 0;
    if (ftdi != nullptr) {
        ftdi->FT_Write(m.usbhandle, escape, static_cast<DWORD>(escape.size()), written);
    }
    DWORD waiting = 0;
    do {
        waiting = 0;
        if (ftdi != nullptr) {
            ftdi->FT_GetQueueStatus(m.usbhandle, waiting);
        }
        if (deadline.reached()) {
            dialogs.beep();
            dialogs.message(QStringLiteral("RF Module Not Responding"));
            return;
        }
        if (waiting < kAnswerBytes) {
            clock.sleep(kQueueLook);
        }
    } while (waiting < kAnswerBytes);

    QByteArray answer;
    DWORD read = 0;
    ftdi->FT_Read(m.usbhandle, answer, waiting, read);

    // The module's answer to this one stays queued for the scanner to pass over.
    const QByteArray command = "ATHP " + rfChannelDigits(m.rfnetid) + ",CN\r";
    ftdi->FT_Write(m.usbhandle, command, static_cast<DWORD>(command.size()), written);
}

} // namespace stellwyn::links
