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

// The value columns of each table: fixed names, never data.
QStringList valueColumns(OneRecordTable table) {
    QStringList columns;
    if (table == OneRecordTable::defaultgroups) {
        for (int n = 1; n <= 6; ++n) {
            columns << QStringLiteral("value%1").arg(n);
        }
    } else {
        for (int n = 0; n < 44; ++n) {
            columns << QStringLiteral("item%1").arg(n);
        }
    }
    return columns;
}

QStringList groupColumns() {
    return valueColumns(OneRecordTable::defaultgroups);
}

QStringList texts(QSqlQuery& query, int count) {
    QStringList out;
    const bool found = query.next();
    for (int i = 0; i < count; ++i) {
        out << (found && !query.value(i).isNull() ? query.value(i).toString() : QString());
    }
    return out;
}

// Binds one value for each column, an empty text as no value.
QVariantList bound(const QStringList& values, int count) {
    QVariantList out;
    for (int i = 0; i < count; ++i) {
        const QString v = values.value(i);
        out << (v.isEmpty() ? QVariant() : QVariant(v));
    }
    return out;
}

QString assignments(const QStringList& columns) {
    QStringList parts;
    for (const QString& column : columns) {
        parts << column + QStringLiteral(" = ?");
    }
    return parts.join(QStringLiteral(", "));
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

QStringList groupValues(Connection& connection, qint64 idnum) {
    const QStringList columns = groupColumns();
    QSqlQuery query =
        connection.run(QStringLiteral("select %1 from groups where rowid = "
                                      "(select min(rowid) from groups where IDnum = ?)")
                           .arg(columns.join(QStringLiteral(", "))),
                       {idnum});
    return texts(query, static_cast<int>(columns.size()));
}

void saveGroupValues(Connection& connection, qint64 idnum, const QStringList& values) {
    const QStringList columns = groupColumns();
    QVariantList bind = bound(values, static_cast<int>(columns.size()));
    bind << idnum;
    connection.run(QStringLiteral("update groups set %1 where rowid = "
                                  "(select min(rowid) from groups where IDnum = ?)")
                       .arg(assignments(columns)),
                   bind);
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

namespace stellwyn::core {

QStringList firstRowValues(Connection& connection, OneRecordTable table) {
    const QStringList columns = valueColumns(table);
    QSqlQuery query =
        connection.run(QStringLiteral("select %1 from %2 order by rowid limit 1")
                           .arg(columns.join(QStringLiteral(", ")), tableName(table)));
    return texts(query, static_cast<int>(columns.size()));
}

void setFirstRowValues(Connection& connection, OneRecordTable table, const QStringList& values) {
    const QStringList columns = valueColumns(table);
    connection.run(QStringLiteral("update %1 set %2 where rowid = (select min(rowid) from %1)")
                       .arg(tableName(table), assignments(columns)),
                   bound(values, static_cast<int>(columns.size())));
}

} // namespace stellwyn::core
