#include "CommandProtocol.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <unistd.h>

namespace stellwyn::indicator_config::protocol {

namespace {
constexpr qsizetype hashChars = 16;
}

QString socketFolder() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    // A relative runtime folder is not one the session made; it would depend on where the
    // program was started.
    if (!runtime.isEmpty() && QDir::isAbsolutePath(runtime)) {
        return QDir::cleanPath(runtime) + QStringLiteral("/stellwyn");
    }
    return QDir::tempPath() + QStringLiteral("/stellwyn-") + QString::number(::getuid());
}

QString socketPath(const QString& homeFolder) {
    const QFileInfo info(homeFolder);
    QString home = info.canonicalFilePath();
    if (home.isEmpty()) {
        home = QDir::cleanPath(info.absoluteFilePath());
    }
    const QByteArray hash = QCryptographicHash::hash(home.toUtf8(), QCryptographicHash::Sha256);
    return socketFolder() + u'/' + QString::fromLatin1(hash.toHex().left(hashChars)) +
           QStringLiteral(".sock");
}

} // namespace stellwyn::indicator_config::protocol
