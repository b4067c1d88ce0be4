#include "core/store/DataColTable.h"

#include "core/store/StoredValues.h"

namespace stellwyn::core {

namespace {

const QString kInsert = QStringLiteral("insert into datacol (ScaleID, \"Group\", Reading, Time, "
                                       "Date, TagID) values (?, ?, ?, ?, ?, ?)");

// Fixed clauses, one per order; nothing of them comes from data.
QString orderClause(DataColOrder order) {
    switch (order) {
    case DataColOrder::storeOrder:
        return QStringLiteral(" order by rowid");
    case DataColOrder::byId:
        return QStringLiteral(" order by ID, Date, Time");
    case DataColOrder::byDateTime:
        return QStringLiteral(" order by Date, Time, ID");
    case DataColOrder::byScaleId:
        return QStringLiteral(" order by ScaleID, Date, Time, ID");
    case DataColOrder::byReading:
        return QStringLiteral(" order by Reading, Date, Time, ID");
    }
    return {};
}

} // namespace

qint64 insertReading(Connection& connection, const QString& scaleId,
                     const std::optional<QString>& reading, const QDateTime& at) {
    QSqlQuery query =
        connection.run(kInsert, {scaleId, QVariant(), reading ? QVariant(*reading) : QVariant(),
                                 storedTime(at.time()), storedDate(at.date()), QVariant()});
    return query.lastInsertId().toLongLong();
}

int insertImportedReadings(Connection& connection, const QList<ImportedReading>& records) {
    Transaction transaction(connection);
    int stored = 0;
    try {
        for (const ImportedReading& record : records) {
            const QString date = storedDateFromLogText(record.date);
            const QString time = storedTimeFromLogText(record.time);
            if (date.isNull() || time.isNull()) {
                throw DatabaseError(
                    QStringLiteral("Record %1 of the import has a date \"%2\" and time \"%3\" "
                                   "that cannot be stored.")
                        .arg(stored + 1)
                        .arg(record.date, record.time));
            }
            connection.run(
                kInsert, {record.scaleId, record.group, record.reading, time, date, record.tagId});
            ++stored;
        }
    } catch (const DatabaseError&) {
        transaction.commit();
        throw;
    }
    transaction.commit();
    return stored;
}

void deleteAllReadings(Connection& connection) {
    connection.run(QStringLiteral("delete from datacol"));
}

qint64 countReadings(Connection& connection) {
    QSqlQuery query = connection.run(QStringLiteral("select count(*) from datacol"));
    query.next();
    return query.value(0).toLongLong();
}

QList<DataColRow> readings(Connection& connection, DataColOrder order) {
    QSqlQuery query = connection.run(
        QStringLiteral("select ID, ScaleID, Reading, Date, Time, \"Group\", TagID from datacol") +
        orderClause(order));
    QList<DataColRow> rows;
    while (query.next()) {
        DataColRow row;
        row.id = query.value(0).toLongLong();
        row.scaleId = query.value(1).toString();
        row.reading = query.value(2);
        row.date = query.value(3).toString();
        row.time = query.value(4).toString();
        row.group = query.value(5);
        row.tagId = query.value(6);
        rows << row;
    }
    return rows;
}

} // namespace stellwyn::core
