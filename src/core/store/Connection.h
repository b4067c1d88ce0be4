#pragma once

#include "core/FatalError.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

struct sqlite3;

namespace stellwyn::core {

// A failure of the data store: a missing file, table or field, a file that is no database, a
// value a column will not take. It is fatal unless the caller traps it, and the few sites that
// do trap a database error catch this type and nothing wider.
class DatabaseError : public FatalError {
public:
    using FatalError::FatalError;
};

// A readings server that could not be reached or would not take a statement. Not fatal where the
// station can go on without the server: its readings wait in the outbox, its grid shows nothing.
class ServerError : public DatabaseError {
public:
    ServerError(const QString& message, const QString& problem)
        : DatabaseError(message), problem_(problem) {}
    // The server's or the driver's own words, without the server's name.
    const QString& problem() const { return problem_; }

private:
    QString problem_;
};

struct ReadingServer;

// One open data file. Opened for one use and closed at the end of it, as every routine of the
// program does with its connection. Opening never creates a file: a new installation is made
// only by createDatabase.
class Connection {
public:
    // Takes a connection text ("...Data Source=<path>") or a plain path; a readings connection
    // text that names a server opens the server.
    static Connection open(const QString& connTextOrPath);
    // A connection to the readings server, whose schema is made or brought up to date first. A
    // server found away a moment ago is not tried again unless evenIfAway.
    static Connection openServer(const ReadingServer& server, bool evenIfAway = false);

    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    QString path() const { return path_; }
    // A PostgreSQL server rather than a SQLite file.
    bool isServer() const { return server_; }
    // On a server: the station whose rows this connection writes, and reads unless allStations.
    const QString& station() const { return station_; }
    bool allStations() const { return allStations_; }
    void setAllStations(bool all) { allStations_ = all; }
    QSqlDatabase database() const;
    // The SQLite connection under Qt's, for the statements run a million times in a row.
    sqlite3* handle() const;
    // An error of this file, named in its text.
    DatabaseError failure(const QString& text) const;

    // Prepares sql, binds values in order, runs it. sql is always a literal of the program;
    // every value from outside arrives through values.
    QSqlQuery run(const QString& sql, const QVariantList& values = {});

private:
    friend class Transaction;
    [[noreturn]] void fail(const QSqlError& error) const;
    Connection(QString name, QString path) : name_(std::move(name)), path_(std::move(path)) {}
    void close();

    QString name_;
    QString path_;
    bool server_ = false;
    QString station_;
    bool allStations_ = false;
};

// Groups many writes of one user action. Rolled back when it goes out of scope uncommitted.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();
    void commit();

private:
    Connection& connection_;
    bool open_ = true;
};

} // namespace stellwyn::core
