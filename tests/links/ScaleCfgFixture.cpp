#include "ScaleCfgFixture.h"

#include "core/store/Connection.h"
#include "core/store/CreateDatabase.h"
#include "core/store/ScaleCfgTable.h"

namespace stellwyn::linkstest {

void makeScaleCfg(const QString& folder, const QString& file, const QList<ScaleRow>& rows) {
    core::createDatabase(folder);
    auto connection = core::Connection::open(folder + u'/' + file);
    for (const ScaleRow& row : rows) {
        core::NewScaleCfg cfg;
        cfg.sctype = row.sctype;
        cfg.description = QStringLiteral("SCALE RS485");
        cfg.netId = row.netId;
        cfg.active = row.active;
        core::insertScaleCfg(connection, cfg);
    }
}

QList<ScaleRow> scaleRows(const QString& text) {
    QList<ScaleRow> rows;
    for (QString item : text.split(u' ', Qt::SkipEmptyParts)) {
        ScaleRow row;
        row.active = !item.endsWith(u'-');
        if (!row.active) {
            item.chop(1);
        }
        const QStringList parts = item.split(u'/');
        row.sctype = parts.value(0);
        const QString netId = parts.value(1);
        row.netId = netId == u"null" ? QVariant() : QVariant(netId.toInt());
        rows << row;
    }
    return rows;
}

} // namespace stellwyn::linkstest
