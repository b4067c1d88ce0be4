#include "CfgTxt.h"

#include "CoreLog.h"
#include "Module1.h"
#include "WholeFile.h"

#include <QDir>
#include <QFile>

namespace stellwyn::core::cfgtxt {

QString firstField(const QString& line) {
    const QString text = trimBlanks(line);
    if (text.startsWith(u'"')) {
        const qsizetype close = text.indexOf(u'"', 1);
        return close < 0 ? text.mid(1) : text.mid(1, close - 1);
    }
    const qsizetype comma = text.indexOf(u',');
    return trimBlanks(comma < 0 ? text : text.left(comma));
}

std::optional<QString> readFirstField(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return std::nullopt;
    }
    // A folder's name is far shorter than this; a file that is no cfg.txt (a log, an image
    // with no line end) is not read whole into memory for it. The one is for the terminating
    // zero that Qt counts in.
    QString line = QString::fromLocal8Bit(file.readLine(kLongestLine + 1));
    while (line.endsWith(u'\n') || line.endsWith(u'\r')) {
        line.chop(1);
    }
    return firstField(line);
}

bool write(const QString& path, const QString& folder) {
    // The new file replaces the old one whole, or not at all: a full disk or a crash on the
    // way leaves the folder that was there, never an empty or half-written line.
    QSaveFile file(path);
    const QByteArray bytes = folder.toLocal8Bit() + '\n';
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeWhole(file, bytes) &&
        commitWhole(file)) {
        return true;
    }
    qCWarning(lcCore).noquote() << QStringLiteral("%1 could not be written (%2); it keeps what it "
                                                  "held before.")
                                       .arg(QDir::toNativeSeparators(path), file.errorString());
    return false;
}

} // namespace stellwyn::core::cfgtxt
