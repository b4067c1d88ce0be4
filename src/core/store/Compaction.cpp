#include "core/store/Compaction.h"

#include "core/store/Connection.h"

#include <QDir>
#include <QFile>

namespace stellwyn::core {

namespace {

QString shown(const QString& path) {
    return QDir::toNativeSeparators(path);
}

void removeFile(const QString& path) {
    QFile file(path);
    if (file.exists() && !file.remove()) {
        throw DatabaseError(
            QStringLiteral("Could not delete '%1': %2").arg(shown(path), file.errorString()));
    }
}

} // namespace

void compactDatabase(const QString& folder) {
    const QDir dir(folder);
    const QString svdata = dir.filePath(QStringLiteral("svdata.mdb"));
    const QString temp = dir.filePath(QStringLiteral("temp.mdb"));

    removeFile(temp);
    // Compacted in place, under SQLite's exclusive lock for the whole of it: a copy moved over
    // the file would leave another station that has it open writing into the old one, and its
    // rows would be lost. A station in the middle of a write makes the compaction fail at once
    // instead of waiting for it.
    Connection connection = Connection::open(svdata);
    connection.run(QStringLiteral("pragma busy_timeout = 0"));
    connection.run(QStringLiteral("vacuum"));
}

} // namespace stellwyn::core
