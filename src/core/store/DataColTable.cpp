#include "core/store/DataColTable.h"

#include "core/store/StoredValues.h"

#include <QSqlError>
#include <algorithm>

namespace stellwyn::core {

namespace {

const QString kInsert = QStringLiteral("insert into datacol (ScaleID, \"Group\", Reading, Time, "
                                       "Date, TagID) values (?, ?, ?, ?, ?, ?)");

const QString kSelect =
    QStringLiteral("select ID, ScaleID, Reading, Date, Time, \"Group\", TagID from datacol");

// Fixed key columns, one list per order; nothing of them comes from data. Every order ends on
// ID so that rows equal in the named fields keep their order of arrival, and so that each row
// has a key of its own to page from.
QStringList orderKeys(DataColOrder order) {
    switch (order) {
    case DataColOrder::storeOrder:
    case DataColOrder::byId:
        return {QStringLiteral("ID")};
    case DataColOrder::byDateTime:
        return {QStringLiteral("Date"), QStringLiteral("Time"), QStringLiteral("ID")};
    case DataColOrder::byScaleId:
        return {QStringLiteral("ScaleID"), QStringLiteral("Date"), QStringLiteral("Time"),
                QStringLiteral("ID")};
    case DataColOrder::byReading:
        return {QStringLiteral("Reading"), QStringLiteral("Date"), QStringLiteral("Time"),
                QStringLiteral("ID")};
    }
    return {QStringLiteral("ID")};
}

QString orderClause(DataColOrder order, bool descending = false) {
    QStringList keys = orderKeys(order);
    if (descending) {
        for (QString& key : keys) {
            key += QStringLiteral(" desc");
        }
    }
    return QStringLiteral(" order by ") + keys.join(QStringLiteral(", "));
}

QVariant keyValue(const DataColRow& row, const QString& column) {
    if (column == u"ID") {
        return row.id;
    }
    if (column == u"ScaleID") {
        return row.scaleId;
    }
    if (column == u"Reading") {
        return row.reading;
    }
    if (column == u"Date") {
        return row.date;
    }
    return row.time;
}

DataColRow rowAt(const QSqlQuery& query) {
    DataColRow row;
    row.id = query.value(0).toLongLong();
    row.scaleId = query.value(1).toString();
    row.reading = query.value(2);
    row.date = query.value(3).toString();
    row.time = query.value(4).toString();
    row.group = query.value(5);
    row.tagId = query.value(6);
    return row;
}

QList<DataColRow> rowsOf(QSqlQuery& query) {
    QList<DataColRow> rows;
    while (query.next()) {
        rows << rowAt(query);
    }
    return rows;
}

// Each row of a card also goes into the grid's order indexes, whose pages a long import visits
// all over: with the default cache they would be written out and read back again and again.
// The connection lives for the one import, so the larger cache goes with it.
void raiseImportCache(Connection& connection) {
    connection.run(QStringLiteral("pragma cache_size=-65536"));
}

} // namespace

qint64 insertReading(Connection& connection, const QString& scaleId,
                     const std::optional<QString>& reading, const QDateTime& at) {
    QSqlQuery query =
        connection.run(kInsert, {scaleId, QVariant(), reading ? QVariant(*reading) : QVariant(),
                                 storedTime(at.time()), storedDate(at.date()), QVariant()});
    return query.lastInsertId().toLongLong();
}

ReadingImport::ReadingImport(Connection& connection)
    : transaction_(connection), insert_(connection.database()) {
    raiseImportCache(connection);
    if (!insert_.prepare(kInsert)) {
        throw DatabaseError(insert_.lastError().text());
    }
}

void ReadingImport::add(const ImportedReading& record) {
    const QString date = storedDateFromLogText(record.date);
    const QString time = storedTimeFromLogText(record.time);
    if (date.isNull() || time.isNull()) {
        throw DatabaseError(QStringLiteral("Record %1 of the import has a date \"%2\" and time "
                                           "\"%3\" that cannot be stored.")
                                .arg(stored_ + 1)
                                .arg(record.date, record.time));
    }
    const QVariant values[] = {record.scaleId, record.group, record.reading,
                               time,           date,         record.tagId};
    for (int i = 0; i < 6; ++i) {
        insert_.bindValue(i, values[i]);
    }
    if (!insert_.exec()) {
        throw DatabaseError(insert_.lastError().text());
    }
    ++stored_;
}

void ReadingImport::commit() {
    insert_.finish();
    transaction_.commit();
}

int insertImportedReadings(Connection& connection, const QList<ImportedReading>& records) {
    ReadingImport import(connection);
    try {
        for (const ImportedReading& record : records) {
            import.add(record);
        }
    } catch (const DatabaseError&) {
        import.commit();
        throw;
    }
    import.commit();
    return import.stored();
}

void deleteAllReadings(Connection& connection) {
    connection.run(QStringLiteral("delete from datacol"));
}

qint64 countReadings(Connection& connection) {
    QSqlQuery query = connection.run(QStringLiteral("select count(*) from datacol"));
    query.next();
    return query.value(0).toLongLong();
}

qint64 countReadingsOn(Connection& connection, const QDate& day) {
    QSqlQuery query = connection.run(QStringLiteral("select count(*) from datacol where Date = ?"),
                                     {storedDate(day)});
    query.next();
    return query.value(0).toLongLong();
}

QList<DataColRow> readings(Connection& connection, DataColOrder order) {
    QSqlQuery query = connection.run(kSelect + orderClause(order));
    return rowsOf(query);
}

void forEachReading(Connection& connection, DataColOrder order,
                    const std::function<bool(const DataColRow&)>& row) {
    QSqlQuery query = connection.run(kSelect + orderClause(order));
    while (query.next()) {
        if (!row(rowAt(query))) {
            return;
        }
    }
}

QList<DataColRow> readingsAt(Connection& connection, DataColOrder order, qint64 offset, int limit,
                             bool fromEnd) {
    QSqlQuery query =
        connection.run(kSelect + orderClause(order, fromEnd) + QStringLiteral(" limit ? offset ?"),
                       {limit, offset});
    QList<DataColRow> rows = rowsOf(query);
    if (fromEnd) {
        std::reverse(rows.begin(), rows.end());
    }
    return rows;
}

std::optional<QList<DataColRow>> readingsBeside(Connection& connection, DataColOrder order,
                                                const DataColRow& key, int limit, bool after) {
    const QStringList keys = orderKeys(order);
    QVariantList values;
    for (const QString& column : keys) {
        values << keyValue(key, column);
        // A null compares as unknown, so a key holding one cannot say where to go on from.
        if (values.last().isNull()) {
            return std::nullopt;
        }
    }
    QStringList marks;
    marks.fill(QStringLiteral("?"), keys.size());
    values << limit;
    QSqlQuery query =
        connection.run(kSelect + QStringLiteral(" where (") + keys.join(QStringLiteral(", ")) +
                           (after ? QStringLiteral(") > (") : QStringLiteral(") < (")) +
                           marks.join(QStringLiteral(", ")) + QStringLiteral(")") +
                           orderClause(order, !after) + QStringLiteral(" limit ?"),
                       values);
    QList<DataColRow> rows = rowsOf(query);
    if (!after) {
        std::reverse(rows.begin(), rows.end());
    }
    return rows;
}

void prepareReadingStore(Connection& connection) {
    // A write-ahead log takes a stored reading to the disk with one sync, and every connection
    // syncs at each commit, so a row is on the disk when its store returns.
    connection.run(QStringLiteral("pragma journal_mode=wal"));
    connection.run(QStringLiteral(
        "create index if not exists datacol_by_datetime on datacol (Date, Time, ID)"));
    connection.run(QStringLiteral(
        "create index if not exists datacol_by_scaleid on datacol (ScaleID, Date, Time, ID)"));
    connection.run(QStringLiteral(
        "create index if not exists datacol_by_reading on datacol (Reading, Date, Time, ID)"));
}

} // namespace stellwyn::core
