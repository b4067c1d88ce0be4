#include "SimProcess.h"

#include <QCoreApplication>
#include <QFile>

namespace stellwyn::linkstest {

namespace {

QString logName() {
    return QStringLiteral("frames.log");
}

// The log writes bytes that are not plain text as <hex>.
QByteArray decodeFrame(const QByteArray& text) {
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == '<' && i + 3 < text.size() && text.at(i + 3) == '>') {
            bytes.append(static_cast<char>(text.mid(i + 1, 2).toInt(nullptr, 16)));
            i += 3;
        } else {
            bytes.append(text.at(i));
        }
    }
    return bytes;
}

} // namespace

SimProcess::SimProcess(const QStringList& arguments) {
    // The test programs are built beside stellwyn-sim, which covers a run outside CTest.
    const QString program =
        qEnvironmentVariable("STELLWYN_BIN_DIR", QCoreApplication::applicationDirPath()) +
        QStringLiteral("/stellwyn-sim");
    process_.setProgram(program);
    process_.setArguments(arguments +
                          QStringList{QStringLiteral("--log"), dir_.filePath(logName())});
    process_.start();
    if (!process_.waitForStarted(5000)) {
        error_ = program + QStringLiteral(": ") + process_.errorString();
        return;
    }
    while (!process_.canReadLine() && process_.waitForReadyRead(5000)) {
    }
    slavePath_ = QString::fromLocal8Bit(process_.readLine()).trimmed();
    if (slavePath_.isEmpty()) {
        error_ = QString::fromLocal8Bit(process_.readAllStandardError());
    }
    // With --no-pty the first line is the socket's; with both, the second.
    QString tcpLine = slavePath_;
    if (!tcpLine.startsWith(QStringLiteral("tcp ")) &&
        arguments.contains(QStringLiteral("--tcp"))) {
        while (!process_.canReadLine() && process_.waitForReadyRead(5000)) {
        }
        tcpLine = QString::fromLocal8Bit(process_.readLine()).trimmed();
    }
    if (tcpLine.startsWith(QStringLiteral("tcp "))) {
        tcpPort_ = static_cast<quint16>(tcpLine.mid(4).toUInt());
    }
}

SimProcess::~SimProcess() {
    stop();
}

void SimProcess::stop() {
    if (process_.state() != QProcess::NotRunning) {
        process_.terminate();
        if (!process_.waitForFinished(3000)) {
            process_.kill();
            process_.waitForFinished(3000);
        }
    }
}

QByteArray SimProcess::received() const {
    QFile log(dir_.filePath(logName()));
    if (!log.open(QIODevice::ReadOnly)) {
        return {};
    }
    QByteArray bytes;
    static const QByteArray marker(" RX ");
    for (const QByteArray& line : log.readAll().split('\n')) {
        const qsizetype at = line.indexOf(marker);
        if (at >= 0) {
            bytes += decodeFrame(line.mid(at + marker.size()));
        }
    }
    return bytes;
}

} // namespace stellwyn::linkstest
