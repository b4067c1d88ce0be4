#pragma once

#include "core/store/Connection.h"

#include <QString>
#include <QStringList>

namespace stellwyn::core {

// groups: one stored group setup per scale, keyed by IDnum.
bool groupsEmpty(Connection& connection);
// Whether a row with that IDnum exists.
bool groupExists(Connection& connection, qint64 idnum);
// Sets the description of the first row with that IDnum, adding the row when there is none.
// Returns true when it added one.
bool saveGroupDescription(Connection& connection, qint64 idnum, const QString& description);
// The six values of the first row with that IDnum; empty texts where the row holds none.
QStringList groupValues(Connection& connection, qint64 idnum);
// Sets the six values of the first row with that IDnum.
void saveGroupValues(Connection& connection, qint64 idnum, const QStringList& values);

// The tables that hold one record: the default group setup, the output configuration in
// transfer, and the default output configuration.
enum class OneRecordTable { defaultgroups, ocxfer, defaultoutputs };

bool hasFirstRow(Connection& connection, OneRecordTable table);
// Adds the record when the table is empty ("save"); returns true when it added one.
bool ensureFirstRow(Connection& connection, OneRecordTable table);
// A read that needs the record: an empty table is a DatabaseError.
void requireFirstRow(Connection& connection, OneRecordTable table);
// The values of the first record: the six group values of defaultgroups, the 44 output items
// of ocxfer and defaultoutputs. Empty texts for a missing record or an empty field.
QStringList firstRowValues(Connection& connection, OneRecordTable table);
// Writes the values into the first record, which must exist; missing values are cleared.
void setFirstRowValues(Connection& connection, OneRecordTable table, const QStringList& values);

} // namespace stellwyn::core
