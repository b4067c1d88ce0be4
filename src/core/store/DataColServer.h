#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace stellwyn::core {

class Connection;

// The readings' tables on a PostgreSQL server, made or brought up to the version this program
// writes, under a lock so that stations starting together do it once.
void prepareServerSchema(Connection& server);

// One reading straight into the server's datacol, under the connection's station. Readings the
// screen keeps go through the outbox instead; this serves importers and tools.
qint64 insertServerReading(Connection& server, const QString& scaleId,
                           const std::optional<QString>& reading, const QDateTime& at);

} // namespace stellwyn::core
