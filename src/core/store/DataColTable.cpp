#include "core/store/DataColTable.h"

#include "core/store/DataColServer.h"
#include "core/store/OrderIndexes.h"
#include "core/store/Outbox.h"
#include "core/store/StoredValues.h"

#include <QSqlError>
#include <algorithm>
#include <sqlite3.h>
#include <utility>

namespace stellwyn::core {

namespace {

// The fields in the order a card's reader sets them.
constexpr char kInsert[] = "insert into datacol (ScaleID, \"Group\", Reading, Time, Date, TagID) "
                           "values (?, ?, ?, ?, ?, ?)";
constexpr char kOutboxInsert[] =
    "insert into datacol_outbox (ScaleID, \"Group\", Reading, Time, Date, TagID) "
    "values (?, ?, ?, ?, ?, ?)";
enum InsertField { scaleIdField, groupField, readingField, timeField, dateField, tagIdField };

const QString kSelect =
    QStringLiteral("select ID, ScaleID, Reading, Date, Time, \"Group\", TagID from datacol");
// The server keeps date and time in their own types, and hands them back as the file keeps them.
const QString kServerSelect = QStringLiteral(
    "select id, scaleid, reading, to_char(date, 'YYYY-MM-DD'), to_char(time, 'HH24:MI:SS'), "
    "\"group\", tagid from datacol");

enum class Key { id, scaleId, reading, date, time };

// Fixed key columns, one list per order; nothing of them comes from data. Every order ends on
// ID so that rows equal in the named fields keep their order of arrival, and so that each row
// has a key of its own to page from.
QList<Key> orderKeys(DataColOrder order) {
    switch (order) {
    case DataColOrder::storeOrder:
    case DataColOrder::byId:
        return {Key::id};
    case DataColOrder::byDateTime:
        return {Key::date, Key::time, Key::id};
    case DataColOrder::byScaleId:
        return {Key::scaleId, Key::date, Key::time, Key::id};
    case DataColOrder::byReading:
        return {Key::reading, Key::date, Key::time, Key::id};
    }
    return {Key::id};
}

// A key column as each store names and compares it. The file's text columns compare NOCASE:
// ASCII letters folded, then byte by byte. The server does the same, whatever collation its
// database was made with (lower() under "C" folds ASCII alone), and takes a bound key of the
// column's own type.
QString keyColumn(Key key, bool server) {
    switch (key) {
    case Key::id:
        return server ? QStringLiteral("id") : QStringLiteral("ID");
    case Key::scaleId:
        return server ? QStringLiteral("lower(scaleid collate \"C\")") : QStringLiteral("ScaleID");
    case Key::reading:
        return server ? QStringLiteral("lower(reading collate \"C\")") : QStringLiteral("Reading");
    case Key::date:
        return server ? QStringLiteral("date") : QStringLiteral("Date");
    case Key::time:
        return server ? QStringLiteral("time") : QStringLiteral("Time");
    }
    return {};
}

QString keyMark(Key key, bool server) {
    if (server && (key == Key::scaleId || key == Key::reading)) {
        return QStringLiteral("lower(?::text collate \"C\")");
    }
    if (server && key == Key::date) {
        return QStringLiteral("?::date");
    }
    if (server && key == Key::time) {
        return QStringLiteral("?::time");
    }
    return QStringLiteral("?");
}

QString orderClause(const Connection& connection, DataColOrder order, bool descending = false) {
    const bool server = connection.isServer();
    QStringList keys;
    for (Key key : orderKeys(order)) {
        // SQLite puts nulls first going up; the server puts them last unless told.
        keys << keyColumn(key, server) +
                    (descending
                         ? (server ? QStringLiteral(" desc nulls last") : QStringLiteral(" desc"))
                         : (server ? QStringLiteral(" nulls first") : QString()));
    }
    return QStringLiteral(" order by ") + keys.join(QStringLiteral(", "));
}

// The rows a connection reads: on a server, this station's unless all stations' are asked for.
struct Scope {
    QString where;
    QVariantList values;
};
Scope scopeOf(const Connection& connection) {
    if (!connection.isServer() || connection.allStations()) {
        return {};
    }
    return {QStringLiteral(" where station = ?"), {connection.station()}};
}

QString selectOf(const Connection& connection) {
    return connection.isServer() ? kServerSelect : kSelect;
}

QVariant keyValue(const DataColRow& row, Key key) {
    switch (key) {
    case Key::id:
        return row.id;
    case Key::scaleId:
        return row.scaleId;
    case Key::reading:
        return row.reading;
    case Key::date:
        return row.date;
    case Key::time:
        return row.time;
    }
    return {};
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

// Below this many rows an import keeps the indexes as they are.
constexpr qint64 kRebuildFrom = 50000;

} // namespace

// The one way a row goes into datacol, whoever keeps it: a statement of SQLite's own, bound and
// run once per row. Through Qt's driver each row would cost a round of QVariant and UTF-16
// conversions that a card of a million rows feels.
class DataColInsert {
public:
    DataColInsert(Connection& connection, ReadingTable table)
        : connection_(connection), db_(connection.handle()) {
        const char* sql = table == ReadingTable::outbox ? kOutboxInsert : kInsert;
        if (sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) !=
            SQLITE_OK) {
            throw failure();
        }
    }
    ~DataColInsert() { sqlite3_finalize(statement_); }
    DataColInsert(const DataColInsert&) = delete;
    DataColInsert& operator=(const DataColInsert&) = delete;

    // UTF-8 text, kept by the caller until exec(); a null view stores null.
    void bind(InsertField field, QByteArrayView utf8) {
        const int rc =
            utf8.isNull()
                ? sqlite3_bind_null(statement_, field + 1)
                : sqlite3_bind_text(statement_, field + 1, utf8.isEmpty() ? "" : utf8.data(),
                                    static_cast<int>(utf8.size()), SQLITE_STATIC);
        if (rc != SQLITE_OK) {
            throw failure();
        }
    }
    // Stores the row; returns its ID.
    qint64 exec() {
        const int rc = sqlite3_step(statement_);
        sqlite3_reset(statement_);
        if (rc != SQLITE_DONE) {
            throw failure();
        }
        return sqlite3_last_insert_rowid(db_);
    }

private:
    DatabaseError failure() const {
        return connection_.failure(QString::fromUtf8(sqlite3_errmsg(db_)));
    }

    Connection& connection_;
    sqlite3* db_;
    sqlite3_stmt* statement_ = nullptr;
};

namespace {

// The card's bytes are single-byte characters; the store keeps UTF-8, which is the same bytes
// as long as they are ASCII, as they nearly always are.
QByteArrayView storedText(QByteArrayView latin1, std::string& scratch) {
    const auto high = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    if (latin1.isNull() || std::none_of(latin1.begin(), latin1.end(), high)) {
        return latin1;
    }
    scratch.clear();
    for (char c : latin1) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x80) {
            scratch += c;
        } else {
            scratch += static_cast<char>(0xC0 | (code >> 6));
            scratch += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return scratch;
}

} // namespace

qint64 insertReading(Connection& connection, const QString& scaleId,
                     const std::optional<QString>& reading, const QDateTime& at) {
    if (connection.isServer()) {
        return insertServerReading(connection, scaleId, reading, at);
    }
    return insertReadingInto(connection, ReadingTable::datacol, scaleId, reading, at);
}

qint64 insertReadingInto(Connection& connection, ReadingTable table, const QString& scaleId,
                         const std::optional<QString>& reading, const QDateTime& at) {
    const QByteArray scale = scaleId.toUtf8();
    const QByteArray value = reading ? reading->toUtf8() : QByteArray();
    const QByteArray time = storedTime(at.time()).toUtf8();
    const QByteArray date = storedDate(at.date()).toUtf8();
    DataColInsert insert(connection, table);
    insert.bind(scaleIdField, scaleId.isNull() ? QByteArrayView() : QByteArrayView(scale));
    insert.bind(groupField, {});
    insert.bind(readingField, reading ? QByteArrayView(value) : QByteArrayView());
    insert.bind(timeField, time);
    insert.bind(dateField, date);
    insert.bind(tagIdField, {});
    return insert.exec();
}

ReadingImport::ReadingImport(Connection& connection, qint64 expectedRows, ReadingTable table)
    : connection_(connection), transaction_(connection) {
    if (table == ReadingTable::outbox) {
        // The outbox has no order indexes; it only ever goes out from its front.
        prepareOutbox(connection);
        insert_ = std::make_unique<DataColInsert>(connection, table);
        return;
    }
    // A row goes into each order index at a place of its own, all over the index; building an
    // index anew sorts the whole table once, which costs less than a third as much per row. So
    // an import that brings at least half as many rows as the table holds drops the indexes,
    // inside the transaction, and has them built again once its rows are committed.
    bool indexed = hasOrderIndexes(connection);
    if (indexed && expectedRows >= kRebuildFrom && countReadings(connection) <= 2 * expectedRows) {
        dropped_ = dropOrderIndexes(connection);
        indexed = false;
    }
    // Without the indexes the rows only go in at the end of the table, where a small cache does
    // as well as a large one and keeps the import's memory flat however long the card. With them,
    // each row goes into the indexes' pages all over, which the default cache would write out and
    // read back again and again; the connection lives for the one import, so the larger cache
    // goes with it.
    connection.run(indexed ? QStringLiteral("pragma cache_size=-65536")
                           : QStringLiteral("pragma cache_size=-8192"));
    insert_ = std::make_unique<DataColInsert>(connection, table);
}

ReadingImport::~ReadingImport() = default;

void ReadingImport::add(const ImportedReading& record) {
    const StoredText date = storedDateFromLogText(record.date);
    const StoredText time = storedTimeFromLogText(record.time);
    if (date.isNull() || time.isNull()) {
        throw DatabaseError(
            QStringLiteral("Record %1 of the import has a date \"%2\" and time "
                           "\"%3\" that cannot be stored.")
                .arg(stored_ + 1)
                .arg(QString::fromLatin1(record.date), QString::fromLatin1(record.time)));
    }
    insert_->bind(scaleIdField, storedText(record.scaleId, scratch_[scaleIdField]));
    insert_->bind(groupField, storedText(record.group, scratch_[groupField]));
    insert_->bind(readingField, storedText(record.reading, scratch_[readingField]));
    insert_->bind(timeField, time.view());
    insert_->bind(dateField, date.view());
    insert_->bind(tagIdField, storedText(record.tagId, scratch_[tagIdField]));
    insert_->exec();
    ++stored_;
}

void ReadingImport::commit() {
    transaction_.commit();
    // The rows are in and durable; the grid shows them in their order of arrival at once, and
    // in its sorted orders faster once the indexes stand again.
    if (std::exchange(dropped_, false)) {
        buildOrderIndexesLater(connection_.path());
    }
}

void deleteAllReadings(Connection& connection) {
    if (connection.isServer()) {
        // Other stations' rows are theirs to clear, whatever this one's grid shows.
        connection.run(QStringLiteral("delete from datacol where station = ?"),
                       {connection.station()});
        return;
    }
    connection.run(QStringLiteral("delete from datacol"));
}

qint64 countReadings(Connection& connection) {
    const Scope scope = scopeOf(connection);
    QSqlQuery query =
        connection.run(QStringLiteral("select count(*) from datacol") + scope.where, scope.values);
    query.next();
    return query.value(0).toLongLong();
}

qint64 countReadingsOn(Connection& connection, const QDate& day) {
    Scope scope = scopeOf(connection);
    QString where = scope.where.isEmpty() ? QStringLiteral(" where ") : scope.where + " and ";
    where += connection.isServer() ? QStringLiteral("date = ?::date") : QStringLiteral("Date = ?");
    scope.values << storedDate(day);
    QSqlQuery query =
        connection.run(QStringLiteral("select count(*) from datacol") + where, scope.values);
    query.next();
    return query.value(0).toLongLong();
}

QList<DataColRow> readings(Connection& connection, DataColOrder order) {
    const Scope scope = scopeOf(connection);
    QSqlQuery query = connection.run(
        selectOf(connection) + scope.where + orderClause(connection, order), scope.values);
    return rowsOf(query);
}

void forEachReading(Connection& connection, DataColOrder order,
                    const std::function<bool(const DataColRow&)>& row) {
    const Scope scope = scopeOf(connection);
    QSqlQuery query = connection.run(
        selectOf(connection) + scope.where + orderClause(connection, order), scope.values);
    while (query.next()) {
        if (!row(rowAt(query))) {
            return;
        }
    }
}

QList<DataColRow> readingsAt(Connection& connection, DataColOrder order, qint64 offset, int limit,
                             bool fromEnd) {
    Scope scope = scopeOf(connection);
    scope.values << limit << offset;
    QSqlQuery query = connection.run(selectOf(connection) + scope.where +
                                         orderClause(connection, order, fromEnd) +
                                         QStringLiteral(" limit ? offset ?"),
                                     scope.values);
    QList<DataColRow> rows = rowsOf(query);
    if (fromEnd) {
        std::reverse(rows.begin(), rows.end());
    }
    return rows;
}

std::optional<QList<DataColRow>> readingsBeside(Connection& connection, DataColOrder order,
                                                const DataColRow& key, int limit, bool after) {
    const bool server = connection.isServer();
    QStringList columns;
    QStringList marks;
    Scope scope = scopeOf(connection);
    for (Key column : orderKeys(order)) {
        columns << keyColumn(column, server);
        marks << keyMark(column, server);
        scope.values << keyValue(key, column);
        // A null compares as unknown, so a key holding one cannot say where to go on from.
        if (scope.values.last().isNull()) {
            return std::nullopt;
        }
    }
    scope.values << limit;
    const QString where = (scope.where.isEmpty() ? QStringLiteral(" where (")
                                                 : scope.where + QStringLiteral(" and (")) +
                          columns.join(QStringLiteral(", ")) +
                          (after ? QStringLiteral(") > (") : QStringLiteral(") < (")) +
                          marks.join(QStringLiteral(", ")) + QStringLiteral(")");
    QSqlQuery query =
        connection.run(selectOf(connection) + where + orderClause(connection, order, !after) +
                           QStringLiteral(" limit ?"),
                       scope.values);
    QList<DataColRow> rows = rowsOf(query);
    if (!after) {
        std::reverse(rows.begin(), rows.end());
    }
    return rows;
}

void prepareReadingStore(Connection& connection) {
    if (connection.isServer()) {
        // Made with the server's schema.
        return;
    }
    // A write-ahead log takes a stored reading to the disk with one sync, and every connection
    // syncs at each commit, so a row is on the disk when its store returns.
    connection.run(QStringLiteral("pragma journal_mode=wal"));
    ensureOrderIndexes(connection);
}

} // namespace stellwyn::core
