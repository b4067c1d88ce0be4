#pragma once

#include <QString>
#include <QStringList>

namespace stellwyn::core {

// What createDatabase did, file by file (paths with the platform's separator).
struct CreateDatabaseResult {
    QStringList created;
    QStringList leftAlone;
};

// Makes a new installation in home: svdata.mdb with every table, holding the one syscfg row
// a first start wants, and sccfg.mdb with an empty ScaleCFG. A file that exists already is
// left as it is, whatever it holds. The folder is made when missing. Failures are a
// DatabaseError; a file is only ever put in place whole.
CreateDatabaseResult createDatabase(const QString& home);

} // namespace stellwyn::core
