#include "core/store/Outbox.h"

#include "core/store/DataColTable.h"
#include "core/store/StoreLog.h"

#include <QUuid>

namespace stellwyn::core {

void prepareOutbox(Connection& local) {
    // AUTOINCREMENT: an ID once given is never given again, even after its row was sent and
    // deleted, so it stays a key of its own on the server.
    local.run(QStringLiteral("create table if not exists datacol_outbox (ID integer primary key "
                             "autoincrement, ScaleID text, \"Group\" text, Reading text, Time "
                             "text, Date text, TagID text)"));
    local.run(QStringLiteral("create table if not exists outbox_origin (origin text not null)"));
    QSqlQuery origin = local.run(QStringLiteral("select count(*) from outbox_origin"));
    origin.next();
    if (origin.value(0).toInt() == 0) {
        local.run(QStringLiteral("insert into outbox_origin (origin) values (?)"),
                  {QUuid::createUuid().toString(QUuid::WithoutBraces)});
    }
}

qint64 queueReading(Connection& local, const QString& scaleId,
                    const std::optional<QString>& reading, const QDateTime& at) {
    return insertReadingInto(local, ReadingTable::outbox, scaleId, reading, at);
}

qint64 countWaiting(Connection& local) {
    QSqlQuery query = local.run(QStringLiteral("select count(*) from datacol_outbox"));
    query.next();
    return query.value(0).toLongLong();
}

qint64 OutboxSender::send(Connection& local, bool evenIfAway) {
    qint64 sent = 0;
    try {
        if (!connection_) {
            connection_.emplace(Connection::openServer(server_, evenIfAway));
        }
        while (const int batch = sendBatch(local, *connection_)) {
            sent += batch;
        }
    } catch (const ServerError& error) {
        // The connection may be broken: the next send makes a new one. A server that answered
        // but refused a row is away in effect, and is told as such.
        connection_.reset();
        // No problem of its own: the server was found away a moment ago and not tried.
        if (!error.problem().isEmpty()) {
            const QString message = serverAwayMessage(server_.shown(), error.problem());
            if (noteServerAway(server_.url, message)) {
                qCWarning(lcStore, "%s", qUtf8Printable(message));
            }
        }
    }
    if (sent > 0) {
        qCInfo(lcStore, "sent %lld readings to %s", static_cast<long long>(sent),
               qUtf8Printable(server_.shown()));
    }
    return countWaiting(local);
}

int OutboxSender::sendBatch(Connection& local, Connection& server) {
    if (origin_.isEmpty()) {
        QSqlQuery origin = local.run(QStringLiteral("select origin from outbox_origin"));
        origin.next();
        origin_ = origin.value(0).toString();
    }
    QSqlQuery waiting =
        local.run(QStringLiteral("select ID, ScaleID, Reading, Date, Time, \"Group\", TagID from "
                                 "datacol_outbox order by ID limit ?"),
                  {batchSize});
    QVariantList values;
    QStringList rows;
    qint64 last = 0;
    while (waiting.next()) {
        last = waiting.value(0).toLongLong();
        values << server_.station << origin_ << last;
        for (int field = 1; field <= 6; ++field) {
            values << waiting.value(field);
        }
        rows << QStringLiteral("(?, ?::uuid, ?, ?, ?, ?::date, ?::time, ?, ?)");
    }
    waiting.finish();
    if (rows.isEmpty()) {
        return 0;
    }
    // One statement, so it is all on the server or none of it. Rows of a batch that was sent
    // once already, before the station could take them out, are there and pass.
    server.run(QStringLiteral("insert into datacol (station, origin, local_id, scaleid, reading, "
                              "date, time, \"group\", tagid) values ") +
                   rows.join(QStringLiteral(", ")) +
                   QStringLiteral(" on conflict (origin, local_id) do nothing"),
               values);
    local.run(QStringLiteral("delete from datacol_outbox where ID <= ?"), {last});
    return static_cast<int>(rows.size());
}

} // namespace stellwyn::core
