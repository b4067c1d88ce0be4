#include "core/store/ScaleCfgTable.h"

#include "core/store/StoredValues.h"

namespace stellwyn::core {

namespace {

const QString kSelect =
    QStringLiteral("select ID, sctype, NetID, SerialNo, Description, Active, polltime, baud, "
                   "\"Poll Time\", \"Poll Active\" from ScaleCFG ");

QList<ScaleCfgRow> rowsOf(QSqlQuery& query) {
    QList<ScaleCfgRow> rows;
    while (query.next()) {
        ScaleCfgRow row;
        row.id = query.value(0).toLongLong();
        row.sctype = query.value(1).toString();
        row.netId = query.value(2);
        row.serialNo = query.value(3).toString();
        row.description = query.value(4).toString();
        row.active = isYes(query.value(5));
        row.polltime = query.value(6);
        row.baud = query.value(7);
        row.pollTime = query.value(8);
        row.pollActive = isYes(query.value(9));
        rows << row;
    }
    return rows;
}

QList<ScaleCfgRow> select(Connection& connection, const QString& rest,
                          const QVariantList& values = {}) {
    QSqlQuery query = connection.run(kSelect + rest, values);
    return rowsOf(query);
}

std::optional<ScaleCfgRow> first(const QList<ScaleCfgRow>& rows) {
    if (rows.isEmpty()) {
        return std::nullopt;
    }
    return rows.first();
}

} // namespace

NewScaleCfg linkDefaultScaleCfg(const QString& commtype, const QString& description,
                                const QString& serialNo) {
    NewScaleCfg row;
    row.sctype = commtype;
    row.description = description.trimmed();
    row.serialNo = serialNo.trimmed();
    row.active = true;
    row.polltime = QStringLiteral(".5");
    row.baud = QStringLiteral("9600");
    return row;
}

NewScaleCfg setupNewScaleCfg(const QVariant& netId, bool active) {
    NewScaleCfg row;
    row.sctype = QStringLiteral("RS485");
    row.description = QStringLiteral("SCALE RS485");
    // Empty, not null: a search for a serial number compares it as text.
    row.serialNo = QStringLiteral("");
    row.netId = netId;
    row.active = active;
    return row;
}

QList<ScaleCfgRow> allScaleCfg(Connection& connection) {
    return select(connection, QStringLiteral("order by ID"));
}

QList<ScaleCfgRow> activeRs485ScaleCfg(Connection& connection) {
    return select(connection,
                  QStringLiteral("where sctype = 'RS485' collate nocase and Active <> 0 "
                                 "order by NetID, ID"));
}

QList<ScaleCfgRow> scaleCfgByType(Connection& connection, ScaleTypeFilter filter) {
    return filter == ScaleTypeFilter::rs232Only
               ? select(connection, QStringLiteral("where sctype = 'RS232' collate nocase "
                                                   "order by NetID, ID"))
               : select(connection, QStringLiteral("where sctype <> 'RS232' collate nocase "
                                                   "order by NetID, ID"));
}

std::optional<ScaleCfgRow> findScaleCfgById(Connection& connection, qint64 id) {
    return first(select(connection, QStringLiteral("where ID = ?"), {id}));
}

std::optional<ScaleCfgRow> findScaleCfgByNetId(Connection& connection, qint64 netId) {
    return first(
        select(connection, QStringLiteral("where NetID = ? order by ID limit 1"), {netId}));
}

std::optional<ScaleCfgRow> findScaleCfgBySerialNo(Connection& connection, const QString& serialNo) {
    if (serialNo.contains(QLatin1Char('\''))) {
        throw DatabaseError(
            QStringLiteral("The serial number \"%1\" holds an apostrophe: no scale record can be "
                           "searched for by it.")
                .arg(serialNo));
    }
    return first(select(connection,
                        QStringLiteral("where SerialNo = ? collate nocase order by ID limit 1"),
                        {serialNo}));
}

qint64 insertScaleCfg(Connection& connection, const NewScaleCfg& row) {
    const QVariant netId = wholeNumberForField(row.netId, QStringLiteral("NetID"));
    const QVariant polltime = numberForField(row.polltime, QStringLiteral("polltime"));
    const QVariant baud = wholeNumberForField(row.baud, QStringLiteral("baud"));
    QSqlQuery query = connection.run(
        QStringLiteral("insert into ScaleCFG (sctype, Description, SerialNo, NetID, Active, "
                       "polltime, baud) values (?, ?, ?, ?, ?, ?, ?)"),
        {row.sctype, row.description, row.serialNo, netId, yesNo(row.active), polltime, baud});
    return query.lastInsertId().toLongLong();
}

bool updateScaleSetupFields(Connection& connection, qint64 id, const ScaleSetupFields& fields) {
    const QVariant netId = wholeNumberForField(fields.netId, QStringLiteral("NetID"));
    const QVariant pollTime = numberForField(fields.pollTime, QStringLiteral("Poll Time"));
    QSqlQuery query = connection.run(
        QStringLiteral("update ScaleCFG set sctype = ?, NetID = ?, Description = ?, Active = ?, "
                       "\"Poll Time\" = ?, \"Poll Active\" = ? where ID = ?"),
        {fields.sctype, netId, fields.description, yesNo(fields.active), pollTime,
         yesNo(fields.pollActive), id});
    return query.numRowsAffected() > 0;
}

bool deleteScaleCfg(Connection& connection, qint64 id) {
    QSqlQuery query = connection.run(QStringLiteral("delete from ScaleCFG where ID = ?"), {id});
    return query.numRowsAffected() > 0;
}

} // namespace stellwyn::core
