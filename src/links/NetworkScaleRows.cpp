#include "links/NetworkScaleRows.h"

#include "core/Dialogs.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "core/store/ScaleCfgTable.h"
#include "links/ScaleEntry.h"

#include <cmath>

namespace stellwyn::links {

namespace {
// An empty field or one that is no number is left to the table entry, which refuses it.
bool fitsAnAddressByte(const QVariant& netId) {
    bool ok = false;
    const double value = netId.toDouble(&ok);
    if (netId.isNull() || !ok) {
        return true;
    }
    const double rounded = std::nearbyint(value);
    return rounded >= 0 && rounded <= 255;
}
} // namespace

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
        if (!fitsAnAddressByte(row.netId)) {
            // Sent as it stands, its low byte would be some other scale's address.
            dialogs.beep();
            // clang-format off
            dialogs.message(QStringLiteral("The RS485 scale in setup row %1 has a Net ID of %2, outside 0 to 255. It is left out of this screen: please correct this in the setup screen.")
                                .arg(row.id)
                                .arg(row.netId.toString()));
            // clang-format on
            continue;
        }
        netIds << row.netId;
    }
    // Every row was told of and left out: there is no scale to open the link for.
    if (netIds.isEmpty()) {
        return std::nullopt;
    }
    return netIds;
}

void fillNetworkTable(core::Module1& m, core::Dialogs& dialogs) {
    core::yieldToEvents();
    m.clearscales();
    auto connection = core::Connection::open(m.cfgconn);
    const auto netIds = networkScaleNetIds(connection, dialogs);
    if (!netIds) {
        return;
    }
    m.scalecount = 0;
    for (const QVariant& netId : *netIds) {
        fillNetworkEntry(m, m.scalecount, netIdOf(netId), QStringLiteral("SCALE RS485 ID#"));
        ++m.scalecount;
    }
    core::yieldToEvents();
}

} // namespace stellwyn::links
