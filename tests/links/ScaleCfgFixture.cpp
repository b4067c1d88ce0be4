#include "ScaleCfgFixture.h"

#include "core/Module1.h"
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

QStringList scaleTable(const core::Module1& m) {
    QStringList entries;
    for (int i = 0; i < m.scalecount; ++i) {
        entries << QStringLiteral("%1|%2|%3|%4|%5")
                       .arg(m.netid[i])
                       .arg(m.scaledesc[i], m.scaleserial[i])
                       .arg(m.usbdevindex[i])
                       .arg(m.scalemark[i]);
    }
    return entries;
}

} // namespace stellwyn::linkstest
