#include "core/store/Connection.h"

#include "core/store/ConnectionText.h"
#include "core/store/DataColServer.h"
#include "core/store/ReadingServer.h"
#include "core/store/StoreLog.h"

#include <QAtomicInteger>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QUrl>
#include <sqlite3.h>

namespace stellwyn::core {

namespace {

QString uniqueConnectionName() {
    static QAtomicInteger<quint64> counter;
    return QStringLiteral("stellwyn-store-%1").arg(counter.fetchAndAddRelaxed(1));
}

// The database's own words are the useful part; Qt's wrapper text adds only "Unable to ...".
// On one line, as the status bar shows one, yet still read as libpq's several messages: each
// starts a line of its own, a long one goes on over indented lines, and QPSQL puts the SQLSTATE
// after the last as "(code)", or "()" when there is none.
QString textOf(const QSqlError& error) {
    QString said = error.databaseText();
    if (said.trimmed().isEmpty()) {
        said = error.text();
    }
    static const QRegularExpression sqlState(QStringLiteral("^\\(\\w+\\)$"));
    QString text;
    bool indented = false;
    for (const QString& line : said.split(QLatin1Char('\n'))) {
        const QString part = line.simplified();
        if (part.isEmpty() || part == u"()") {
            continue;
        }
        // Only an indented line after an indented one goes on with it: the first indented one is
        // libpq's hint to the message above.
        const bool indent = line.front().isSpace();
        const bool goesOn = (indented && indent) || sqlState.match(part).hasMatch();
        if (!text.isEmpty()) {
            text += goesOn ? QStringLiteral(" ") : QStringLiteral("; ");
        }
        text += part;
        indented = indent;
    }
    return text;
}

} // namespace

Connection Connection::open(const QString& connTextOrPath) {
    if (namesServer(connTextOrPath)) {
        return openServer(serverOf(connTextOrPath));
    }
    const QString path = QDir::cleanPath(dataSourceOf(connTextOrPath));
    const QString shown = QDir::toNativeSeparators(path);
    if (path.isEmpty() || !QFileInfo(path).isFile()) {
        throw DatabaseError(QStringLiteral("Could not find file '%1'.").arg(shown));
    }

    Connection connection(uniqueConnectionName(), path);
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection.name_);
    // mode=rw makes SQLite refuse to create the file should it vanish after the test above.
    QUrl uri = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    uri.setQuery(QStringLiteral("mode=rw"));
    db.setDatabaseName(uri.toString(QUrl::FullyEncoded));
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI"));
    if (!db.open()) {
        throw DatabaseError(
            QStringLiteral("Could not open '%1': %2").arg(shown, textOf(db.lastError())));
    }
    // SQLite reads the header only at the first statement, so a file that is no database
    // would otherwise pass the open and fail later at some unrelated step.
    connection.run(QStringLiteral("select count(*) from sqlite_master"));
    // Each commit waits for the disk: nothing the program reports stored is lost to a crash or
    // a power cut.
    connection.run(QStringLiteral("pragma synchronous=full"));
    return connection;
}

Connection Connection::openServer(const ReadingServer& server, bool evenIfAway) {
    const QString url = server.url;
    const QString shown = server.shown();
    const auto away = [&url, &shown](const QString& problem) {
        const QString message = serverAwayMessage(shown, problem);
        if (noteServerAway(url, message)) {
            qCWarning(lcStore, "%s", qUtf8Printable(message));
        }
        return ServerError(message, problem);
    };
    if (!evenIfAway && serverAway(url)) {
        throw ServerError(serverProblem(url), QString());
    }
    const ServerAddress address = serverAddress(url);
    if (!address.problem.isEmpty()) {
        throw away(address.problem);
    }
    Connection connection(uniqueConnectionName(), shown);
    connection.server_ = true;
    connection.station_ = server.station;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connection.name_);
    if (!db.isValid()) {
        throw away(QStringLiteral("Qt's PostgreSQL driver QPSQL is not installed"));
    }
    db.setHostName(address.host);
    db.setPort(address.port);
    db.setDatabaseName(address.database);
    db.setUserName(address.user);
    // No password: libpq reads ~/.pgpass or PGPASSWORD by itself. The timeouts keep a server
    // that has gone from holding the screen for long; an open connection to a host that
    // vanished is given up after a few seconds rather than TCP's quarter of an hour.
    QStringList options = {
        QStringLiteral("connect_timeout=3"),  QStringLiteral("application_name=stellwyn"),
        QStringLiteral("keepalives_idle=10"), QStringLiteral("keepalives_interval=3"),
        QStringLiteral("keepalives_count=3"), QStringLiteral("tcp_user_timeout=10000")};
    if (!address.options.isEmpty()) {
        options << address.options;
    }
    db.setConnectOptions(options.join(QLatin1Char(';')));
    if (!db.open()) {
        throw away(textOf(db.lastError()));
    }
    try {
        prepareServerSchema(connection);
    } catch (const ServerError& error) {
        throw away(error.problem());
    }
    if (noteServerAnswered(url)) {
        qCWarning(lcStore, "Readings server %s answers again.", qUtf8Printable(shown));
    }
    return connection;
}

Connection::Connection(Connection&& other) noexcept
    : name_(std::exchange(other.name_, QString())), path_(std::move(other.path_)),
      server_(other.server_), station_(std::move(other.station_)),
      allStations_(other.allStations_) {}

Connection& Connection::operator=(Connection&& other) noexcept {
    if (this != &other) {
        close();
        name_ = std::exchange(other.name_, QString());
        path_ = std::move(other.path_);
        server_ = other.server_;
        station_ = std::move(other.station_);
        allStations_ = other.allStations_;
    }
    return *this;
}

Connection::~Connection() {
    close();
}

void Connection::close() {
    if (name_.isEmpty()) {
        return;
    }
    {
        QSqlDatabase db = QSqlDatabase::database(name_, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(name_);
    name_.clear();
}

QSqlDatabase Connection::database() const {
    return QSqlDatabase::database(name_, false);
}

sqlite3* Connection::handle() const {
    const QVariant handle = database().driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0) {
        throw failure(QStringLiteral("The store's driver is not SQLite."));
    }
    return *static_cast<sqlite3* const*>(handle.constData());
}

void Connection::fail(const QSqlError& error) const {
    if (server_) {
        const QString problem = textOf(error);
        throw ServerError(QStringLiteral("Readings server %1: %2").arg(path_, problem), problem);
    }
    throw failure(textOf(error));
}

DatabaseError Connection::failure(const QString& text) const {
    // With many files open at once (the two databases, the import's), the file is half of what
    // the operator needs to know.
    return DatabaseError(QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path_), text));
}

QSqlQuery Connection::run(const QString& sql, const QVariantList& values) {
    QSqlQuery query(database());
    query.setForwardOnly(true);
    // The server's driver prepares through PREPARE, which takes no schema statement; with
    // nothing to bind there is nothing to prepare for.
    if (server_ && values.isEmpty()) {
        if (!query.exec(sql)) {
            fail(query.lastError());
        }
        return query;
    }
    if (!query.prepare(sql)) {
        fail(query.lastError());
    }
    for (const QVariant& value : values) {
        query.addBindValue(value);
    }
    if (!query.exec()) {
        fail(query.lastError());
    }
    return query;
}

Transaction::Transaction(Connection& connection) : connection_(connection) {
    if (!connection_.database().transaction()) {
        connection_.fail(connection_.database().lastError());
    }
}

Transaction::~Transaction() {
    if (open_) {
        connection_.database().rollback();
    }
}

void Transaction::commit() {
    if (!connection_.database().commit()) {
        connection_.fail(connection_.database().lastError());
    }
    open_ = false;
}

} // namespace stellwyn::core
