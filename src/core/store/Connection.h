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

// One open data file. Opened for one use and closed at the end of it, as every routine of the
// program does with its connection. Opening never creates a file: a new installation is made
// only by createDatabase.
class Connection {
public:
    // Takes a connection text ("...Data Source=<path>") or a plain path.
    static Connection open(const QString& connTextOrPath);

    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    QString path() const { return path_; }
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
    DatabaseError failure(const QSqlError& error) const;
    Connection(QString name, QString path) : name_(std::move(name)), path_(std::move(path)) {}
    void close();

    QString name_;
    QString path_;
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
