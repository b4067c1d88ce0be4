#include "CollectorLog.h"

#include "core/Dialogs.h"

#include <QLoggingCategory>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace stellwyn::collector {

namespace {

void writeLine(const QString& line) {
    const QByteArray bytes = core::UnattendedDialogs::oneLine(line).toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (context.category != nullptr && qstrncmp(context.category, "stellwyn.", 9) == 0) {
        writeLine(QString::fromLatin1(context.category) + QStringLiteral(": ") + text);
        return;
    }
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg) {
        writeLine(QStringLiteral("qt: ") + text);
    }
}

} // namespace

void logLine(const QString& what, const QString& text) {
    writeLine(what + QStringLiteral(": ") + text);
}

void installLogHandler() {
    qInstallMessageHandler(handleMessage);
    // QT_LOGGING_RULES, read after these, can still turn it off or others on.
    QLoggingCategory::setFilterRules(QStringLiteral("stellwyn.store.info=true"));
}

bool logToFile(const QString& path) {
    const int fd =
        ::open(path.toLocal8Bit().constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
    if (fd < 0) {
        return false;
    }
    std::fflush(stderr);
    const bool ok = ::dup2(fd, STDERR_FILENO) >= 0;
    ::close(fd);
    return ok;
}

} // namespace stellwyn::collector
