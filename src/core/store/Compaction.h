#pragma once

#include <QString>

namespace stellwyn::core {

// Compacts svdata.mdb in folder by way of temp.mdb: a stale temp.mdb goes first, the compact
// copy is written to temp.mdb, then svdata.mdb is replaced by it and temp.mdb removed.
// svdata.mdb is deleted only once its compact copy is whole; a failure at any step is a
// DatabaseError, and leaves the data in svdata.mdb or, past its deletion, in temp.mdb.
void compactDatabase(const QString& folder);

} // namespace stellwyn::core
