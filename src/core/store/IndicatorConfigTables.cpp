#include "core/store/IndicatorConfigTables.h"

namespace stellwyn::core {

namespace {

QString tableName(OneRecordTable table) {
    switch (table) {
    case OneRecordTable::defaultgroups:
        return QStringLiteral("defaultgroups");
    case OneRecordTable::ocxfer:
        return QStringLiteral("ocxfer");
    case OneRecordTable::defaultoutputs:
        return QStringLiteral("defaultoutputs");
    }
    return {};
}

bool anyRow(Connection& connection, const QString& sql, const QVariantList& values = {}) {
    QSqlQuery query = connection.run(sql, values);
    return query.next();
}

} // namespace

bool groupsEmpty(Connection& connection) {
    return !anyRow(connection, QStringLiteral("select 1 from groups limit 1"));
}

bool groupExists(Connection& connection, qint64 idnum) {
    return anyRow(connection, QStringLiteral("select 1 from groups where IDnum = ? limit 1"),
                  {idnum});
}

bool saveGroupDescription(Connection& connection, qint64 idnum, const QString& description) {
    // The first row with the key keeps the name; any later duplicate is left alone, as the
    // search from the first row always found the first.
    QSqlQuery updated =
        connection.run(QStringLiteral("update groups set description = ? where rowid = "
                                      "(select min(rowid) from groups where IDnum = ?)"),
                       {description, idnum});
    if (updated.numRowsAffected() > 0) {
        return false;
    }
    connection.run(QStringLiteral("insert into groups (IDnum, description) values (?, ?)"),
                   {idnum, description});
    return true;
}

bool hasFirstRow(Connection& connection, OneRecordTable table) {
    // The table name is one of three fixed names, never data.
    return anyRow(connection, QStringLiteral("select 1 from %1 limit 1").arg(tableName(table)));
}

bool ensureFirstRow(Connection& connection, OneRecordTable table) {
    if (hasFirstRow(connection, table)) {
        return false;
    }
    connection.run(QStringLiteral("insert into %1 default values").arg(tableName(table)));
    return true;
}

void requireFirstRow(Connection& connection, OneRecordTable table) {
    if (!hasFirstRow(connection, table)) {
        throw DatabaseError(
            QStringLiteral("The table %1 holds no record to read.").arg(tableName(table)));
    }
}

} // namespace stellwyn::core
