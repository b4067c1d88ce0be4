#include "core/store/DataColServer.h"

#include "core/store/Connection.h"
#include "core/store/StoredValues.h"

namespace stellwyn::core {

namespace {

constexpr int kSchemaVersion = 1;

// One step for each version: the step at index i brings a server at version i to i + 1.
// origin and local_id are the reading's key from the station's outbox: a batch sent again after
// the station died between the server's commit and its own delete finds its rows there already.
const char* const kSteps[] = {
    "create table datacol ("
    " id bigint generated always as identity primary key,"
    " station text not null,"
    " origin uuid not null,"
    " local_id bigint not null,"
    " scaleid text,"
    " reading text,"
    " date date,"
    " time time(0),"
    " \"group\" text,"
    " tagid text,"
    " received timestamptz not null default now(),"
    " unique (origin, local_id));"
    // The grid's orders of one station, and the queries of a whole plant by day.
    "create index datacol_station_id on datacol (station, id);"
    "create index datacol_station_datetime on datacol"
    " (station, date nulls first, time nulls first, id);"
    "create index datacol_station_scaleid on datacol"
    " (station, lower(scaleid collate \"C\") nulls first, date nulls first, time nulls first,"
    " id);"
    "create index datacol_station_reading on datacol"
    " (station, lower(reading collate \"C\") nulls first, date nulls first, time nulls first,"
    " id);"
    "create index datacol_datetime on datacol (date nulls first, time nulls first, id);",
};
static_assert(std::size(kSteps) == kSchemaVersion);

// Read from pg_class itself, not through to_regclass: that answers from the backend's cache of
// name lookups, which waiting on the advisory lock does not refresh, so a station that looked
// before another made the tables would still find none there once it holds the lock. Reading
// the catalogue takes a fresh snapshot, and its lock on pg_class has the backend take in what
// was committed meanwhile before the select below looks the name up.
int versionOf(Connection& server) {
    QSqlQuery exists =
        server.run(QStringLiteral("select exists (select from pg_catalog.pg_class where relname = "
                                  "'schema_version' and pg_catalog.pg_table_is_visible(oid))"));
    exists.next();
    if (!exists.value(0).toBool()) {
        return -1;
    }
    QSqlQuery query = server.run(QStringLiteral("select coalesce(max(version), 0) from "
                                                "schema_version"));
    query.next();
    return query.value(0).toInt();
}

} // namespace

void prepareServerSchema(Connection& server) {
    if (versionOf(server) == kSchemaVersion) {
        return;
    }
    Transaction transaction(server);
    // Any fixed number will do, as long as every station takes the same one.
    server.run(QStringLiteral("select pg_advisory_xact_lock(7421001)"));
    int version = versionOf(server);
    if (version < 0) {
        server.run(QStringLiteral("create table schema_version (version integer not null, "
                                  "applied timestamptz not null default now())"));
        version = 0;
    }
    if (version > kSchemaVersion) {
        const QString problem = QStringLiteral("its readings tables are of version %1, newer "
                                               "than this program's %2")
                                    .arg(version)
                                    .arg(kSchemaVersion);
        throw ServerError(problem, problem);
    }
    for (; version < kSchemaVersion; ++version) {
        for (const QString& statement :
             QString::fromLatin1(kSteps[version]).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            server.run(statement);
        }
        server.run(QStringLiteral("insert into schema_version (version) values (?)"),
                   {version + 1});
    }
    transaction.commit();
}

qint64 insertServerReading(Connection& server, const QString& scaleId,
                           const std::optional<QString>& reading, const QDateTime& at) {
    QSqlQuery query = server.run(
        QStringLiteral("insert into datacol (station, origin, local_id, scaleid, reading, date, "
                       "time) values (?, gen_random_uuid(), 0, ?, ?, ?::date, ?::time) "
                       "returning id"),
        {server.station(), scaleId,
         reading ? QVariant(*reading) : QVariant(QMetaType::fromType<QString>()),
         storedDate(at.date()), storedTime(at.time())});
    query.next();
    return query.value(0).toLongLong();
}

} // namespace stellwyn::core
