#include "core/store/Outbox.h"

#include "core/store/DataColTable.h"
#include "core/store/StoreLog.h"

#include <QUuid>

namespace stellwyn::core {

namespace {

// A PostgreSQL array literal, built one element at a time: each value quoted, with its quotes
// and backslashes escaped, so that nothing in a value can end it; a null as NULL. The literal
// itself is bound as a parameter like any other value.
class ArrayText {
public:
    void add(const QVariant& value) {
        text_ += text_.isEmpty() ? QLatin1Char('{') : QLatin1Char(',');
        if (value.isNull()) {
            text_ += QStringLiteral("NULL");
            return;
        }
        text_ += QLatin1Char('"');
        for (const QChar c : value.toString()) {
            if (c == u'"' || c == u'\\') {
                text_ += QLatin1Char('\\');
            }
            text_ += c;
        }
        text_ += QLatin1Char('"');
    }
    QString finish() const { return text_.isEmpty() ? QStringLiteral("{}") : text_ + u'}'; }

private:
    QString text_;
};

} // namespace

void prepareOutbox(Connection& local) {
    // One sync per commit with the write-ahead log, where the rollback journal takes several:
    // each reading is committed here and then taken out again.
    local.run(QStringLiteral("pragma journal_mode=wal"));
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
    // The batch goes as one array per field, one statement of nine parameters: a statement of a
    // parameter per value costs the server several times as much to take apart as to store.
    ArrayText columns[7];
    qint64 last = 0;
    int count = 0;
    while (waiting.next()) {
        last = waiting.value(0).toLongLong();
        columns[0].add(QString::number(last));
        for (int field = 1; field <= 6; ++field) {
            columns[field].add(waiting.value(field));
        }
        ++count;
    }
    waiting.finish();
    if (count == 0) {
        return 0;
    }
    QVariantList values = {server_.station, origin_};
    for (ArrayText& column : columns) {
        values << column.finish();
    }
    // One statement, so it is all on the server or none of it. Rows of a batch that was sent
    // once already, before the station could take them out, are there and pass.
    server.run(QStringLiteral("insert into datacol (station, origin, local_id, scaleid, reading, "
                              "date, time, \"group\", tagid) select ?, ?::uuid, * from "
                              "unnest(?::bigint[], ?::text[], ?::text[], ?::date[], ?::time[], "
                              "?::text[], ?::text[]) on conflict (origin, local_id) do nothing"),
               values);
    // The delete need not wait for the disk: should a crash undo it, the rows go again and the
    // server keeps the ones it has. The next durable commit takes it to the disk anyway.
    local.run(QStringLiteral("pragma synchronous=normal"));
    local.run(QStringLiteral("delete from datacol_outbox where ID <= ?"), {last});
    local.run(QStringLiteral("pragma synchronous=full"));
    return count;
}

} // namespace stellwyn::core
