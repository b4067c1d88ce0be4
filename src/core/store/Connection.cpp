#include "core/store/Connection.h"

#include "core/store/ConnectionText.h"

#include <QAtomicInteger>
#include <QDir>
#include <QFileInfo>
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
QString textOf(const QSqlError& error) {
    const QString fromDatabase = error.databaseText().trimmed();
    return fromDatabase.isEmpty() ? error.text().trimmed() : fromDatabase;
}

} // namespace

Connection Connection::open(const QString& connTextOrPath) {
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

Connection::Connection(Connection&& other) noexcept
    : name_(std::exchange(other.name_, QString())), path_(std::move(other.path_)) {}

Connection& Connection::operator=(Connection&& other) noexcept {
    if (this != &other) {
        close();
        name_ = std::exchange(other.name_, QString());
        path_ = std::move(other.path_);
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

DatabaseError Connection::failure(const QSqlError& error) const {
    return failure(textOf(error));
}

DatabaseError Connection::failure(const QString& text) const {
    // With many files open at once (the two databases, the import's), the file is half of what
    // the operator needs to know.
    return DatabaseError(QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path_), text));
}

QSqlQuery Connection::run(const QString& sql, const QVariantList& values) {
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!query.prepare(sql)) {
        throw failure(query.lastError());
    }
    for (const QVariant& value : values) {
        query.addBindValue(value);
    }
    if (!query.exec()) {
        throw failure(query.lastError());
    }
    return query;
}

Transaction::Transaction(Connection& connection) : connection_(connection) {
    if (!connection_.database().transaction()) {
        throw connection_.failure(connection_.database().lastError());
    }
}

Transaction::~Transaction() {
    if (open_) {
        connection_.database().rollback();
    }
}

void Transaction::commit() {
    if (!connection_.database().commit()) {
        throw connection_.failure(connection_.database().lastError());
    }
    open_ = false;
}

} // namespace stellwyn::core
