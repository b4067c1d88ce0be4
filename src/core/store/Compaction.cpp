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
    {
        Connection connection = Connection::open(svdata);
        connection.run(QStringLiteral("vacuum into ?"), {temp});
    }
    // The copy must open as a database before the original goes.
    { const Connection copy = Connection::open(temp); }
    removeFile(svdata);
    if (!QFile::copy(temp, svdata)) {
        throw DatabaseError(QStringLiteral("Could not copy '%1' to '%2'. The data is in '%1'.")
                                .arg(shown(temp), shown(svdata)));
    }
    removeFile(temp);
}

} // namespace stellwyn::core
