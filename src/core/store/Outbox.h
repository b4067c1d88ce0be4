#pragma once

#include "core/store/Connection.h"
#include "core/store/ReadingServer.h"

#include <QDateTime>
#include <optional>

namespace stellwyn::core {

// A station that keeps its readings on a server commits each one first to the outbox, a table of
// its own data file, as durable as a reading kept in the file itself; the outbox is then sent in
// order. Each row's key on the server is the outbox's origin (made once with the table) and the
// row's ID there, which never comes round again, so a batch sent twice lands once.
void prepareOutbox(Connection& local);
// Commits one reading to the outbox; returns its ID there.
qint64 queueReading(Connection& local, const QString& scaleId,
                    const std::optional<QString>& reading, const QDateTime& at);
qint64 countWaiting(Connection& local);

// Sends the outbox of one data file to its server, holding the server's connection between sends.
class OutboxSender {
public:
    explicit OutboxSender(ReadingServer server) : server_(std::move(server)) {}

    // Sends every waiting reading, oldest first, in batches: each batch is committed on the
    // server before it leaves the outbox. Returns how many are still waiting: the server is
    // away, or would not take one. Unless evenIfAway, a server found away a moment ago is left
    // alone.
    qint64 send(Connection& local, bool evenIfAway);

    static constexpr int batchSize = 1000;

private:
    // Returns how many it sent; none when nothing waits.
    int sendBatch(Connection& local, Connection& server);

    ReadingServer server_;
    std::optional<Connection> connection_;
    QString origin_;
};

} // namespace stellwyn::core
