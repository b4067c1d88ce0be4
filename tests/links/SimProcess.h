#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace stellwyn::linkstest {

// The stellwyn-sim program on a pseudo-terminal of its own, logging every frame it takes and
// sends. Ended with the object.
class SimProcess {
public:
    explicit SimProcess(const QStringList& arguments);
    ~SimProcess();

    // Empty when the program did not start or named no terminal.
    const QString& slavePath() const { return slavePath_; }
    // The port of --tcp, or 0.
    quint16 tcpPort() const { return tcpPort_; }
    // Ends the program now, by its process id, as a server that goes away.
    void stop();
    // The bytes of every frame received, in order, from the program's log.
    QByteArray received() const;
    QString errorText() const { return error_; }

private:
    QTemporaryDir dir_;
    QProcess process_;
    QString slavePath_;
    quint16 tcpPort_ = 0;
    QString error_;
};

} // namespace stellwyn::linkstest
