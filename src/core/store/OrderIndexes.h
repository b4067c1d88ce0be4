#pragma once

#include "core/store/Connection.h"

#include <QString>

namespace stellwyn::core {

// The indexes behind the grid's orders of datacol. The grid pages through a long table by
// them; without them each page of a sorted grid sorts the whole table again. Every stored row
// goes into each of them, so a long import leaves them out while its rows go in.

// Whether the file holds any of them, of this version or an earlier one.
bool hasOrderIndexes(Connection& connection);

// Drops the indexes that the file holds; returns whether it held any. Inside the caller's
// transaction, so that a rollback brings them back.
bool dropOrderIndexes(Connection& connection);

// Makes the indexes the file lacks. On a short table at once; on a long one, whose indexes
// take seconds to sort, on a thread of their own with a connection of their own, while the
// screen goes on with the table in the meantime (sorted pages are slower until they stand).
// Indexes of earlier versions of the file, which held the ID as a key of their own, are
// replaced.
void ensureOrderIndexes(Connection& connection);

// Builds the file's missing indexes on their own thread, whatever the length of the table.
void buildOrderIndexesLater(const QString& path);

// Whether a build of the file's indexes is under way.
bool orderIndexesBuilding(const QString& path);

// Waits until every build under way has ended, as a program must before it measures or
// checks what they made.
void waitForOrderIndexes();

} // namespace stellwyn::core
