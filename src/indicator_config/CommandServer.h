#pragma once

#include <QByteArray>
#include <QHash>
#include <QLocalServer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <deque>
#include <functional>

class QLocalSocket;

namespace stellwyn::indicator_config {

class CapturingDialogs;

// Takes execute strings from other programs of the same user over a local socket and runs
// them one at a time, in the order they came. A string that arrives while one runs, even in a
// yield of it, waits until that one has ended: unlike the old conversation, two commands never
// interleave their exchanges with a scale. The line protocol is in CommandProtocol.h.
class CommandServer : public QObject {
    Q_OBJECT
public:
    using Execute = std::function<void(const QString& cmdStr)>;

    CommandServer(QString socketPath, Execute execute, CapturingDialogs& dialogs,
                  QObject* parent = nullptr);
    ~CommandServer() override;

    // Makes the private folder and the socket, mode 0600, taking over a socket file that a
    // killed run left behind. False, after logging why, when it cannot serve.
    bool listen();

    const QString& path() const { return path_; }

private:
    struct Client {
        QByteArray line;
        // The line in progress is already too long: its bytes are dropped up to its LF.
        bool overlong = false;
    };
    struct Command {
        QPointer<QLocalSocket> from;
        QString cmdStr;
        bool wait = false;
    };

    void accept();
    void readFrom(QLocalSocket* socket);
    void takeLine(QLocalSocket* socket, QByteArray line);
    void scheduleNext();
    void runNext();
    static void reply(QLocalSocket* socket, QByteArrayView line);

    QString path_;
    Execute execute_;
    CapturingDialogs& dialogs_;
    QLocalServer server_;
    QHash<QLocalSocket*, Client> clients_;
    std::deque<Command> queue_;
    bool running_ = false;
    bool scheduled_ = false;
};

} // namespace stellwyn::indicator_config
