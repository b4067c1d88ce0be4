#include "links/NetworkScaleRows.h"

#include "core/Dialogs.h"
#include "core/store/ScaleCfgTable.h"

namespace stellwyn::links {

std::optional<QList<QVariant>> networkScaleNetIds(core::Connection& connection,
                                                  core::Dialogs& dialogs) {
    const QList<core::ScaleCfgRow> rows = core::activeRs485ScaleCfg(connection);
    if (rows.isEmpty()) {
        dialogs.beep();
        dialogs.message(QStringLiteral("There are no RS485 scales defined in setup. Aborting."));
        return std::nullopt;
    }
    QList<QVariant> netIds;
    for (const core::ScaleCfgRow& row : rows) {
        // An empty field is not 0 here: it passes, and fails later when it is stored.
        if (!row.netId.isNull() && row.netId.toDouble() == 0.0) {
            dialogs.beep();
            // clang-format off
            dialogs.message(QStringLiteral(" One of the RS485 scales has a Net ID of 0. Please close this screen and correct this in the setup screen. Aborting."));
            // clang-format on
            return std::nullopt;
        }
        netIds << row.netId;
    }
    return netIds;
}

} // namespace stellwyn::links
