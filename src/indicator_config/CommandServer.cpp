#include "CommandServer.h"

#include "CapturingDialogs.h"
#include "CommandProtocol.h"
#include "IndicatorConfigLog.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"

#include <QFileInfo>
#include <QLocalSocket>
#include <QStringDecoder>
#include <QTimer>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace stellwyn::indicator_config {

namespace {

// Enough for any script; a client that sends more before the program catches up is refused
// rather than held in memory.
constexpr std::size_t maxQueued = 256;
constexpr int liveServerProbeMs = 500;

QString systemError() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

// The folder must be ours alone: made 0700, and a folder of that name that is someone else's
// (or a link to one) is not used at all.
bool makePrivateFolder(const QString& folder) {
    const QByteArray name = QFile::encodeName(folder);
    if (::mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST) {
        qCWarning(lcCommand) << "cannot make the command folder" << folder << systemError();
        return false;
    }
    struct stat st {};
    if (::lstat(name.constData(), &st) != 0) {
        qCWarning(lcCommand) << "cannot read the command folder" << folder << systemError();
        return false;
    }
    if (!S_ISDIR(st.st_mode) || st.st_uid != ::getuid()) {
        qCWarning(lcCommand) << "the command folder" << folder
                             << "is not a folder of this user; no commands are taken";
        return false;
    }
    if ((st.st_mode & 07777) != S_IRWXU && ::chmod(name.constData(), S_IRWXU) != 0) {
        qCWarning(lcCommand) << "cannot make the command folder private" << folder << systemError();
        return false;
    }
    return true;
}

bool anotherServerAnswers(const QString& path) {
    QLocalSocket probe;
    probe.connectToServer(path);
    return probe.waitForConnected(liveServerProbeMs);
}

} // namespace

CommandServer::CommandServer(QString socketPath, Execute execute, CapturingDialogs& dialogs,
                             QObject* parent)
    : QObject(parent), path_(std::move(socketPath)), execute_(std::move(execute)),
      dialogs_(dialogs) {
    connect(&server_, &QLocalServer::newConnection, this,
            [this] { core::runHandler([this] { accept(); }); });
}

CommandServer::~CommandServer() {
    // The clients' sockets are the server's children; their signals must not reach a
    // half-destroyed object.
    for (auto it = clients_.keyBegin(); it != clients_.keyEnd(); ++it) {
        (*it)->disconnect(this);
    }
    server_.close();
}

bool CommandServer::listen() {
    if (!makePrivateFolder(QFileInfo(path_).path())) {
        return false;
    }
    if (!server_.listen(path_)) {
        if (server_.serverError() != QAbstractSocket::AddressInUseError) {
            qCWarning(lcCommand) << "cannot listen on" << path_ << server_.errorString();
            return false;
        }
        if (anotherServerAnswers(path_)) {
            qCWarning(lcCommand) << "another program already takes commands on" << path_;
            return false;
        }
        // Left by a run that was killed: nobody answers on it any more.
        QLocalServer::removeServer(path_);
        if (!server_.listen(path_)) {
            qCWarning(lcCommand) << "cannot listen on" << path_ << server_.errorString();
            return false;
        }
    }
    if (::chmod(QFile::encodeName(path_).constData(), S_IRUSR | S_IWUSR) != 0) {
        qCWarning(lcCommand) << "cannot make the command socket private" << path_ << systemError();
        server_.close();
        return false;
    }
    return true;
}

void CommandServer::accept() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        clients_.insert(socket, Client{});
        connect(socket, &QLocalSocket::readyRead, this,
                [this, socket] { core::runHandler([&] { readFrom(socket); }); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            // Lines that came just before the client closed are still taken.
            core::runHandler([&] { readFrom(socket); });
            clients_.remove(socket);
            socket->deleteLater();
        });
        readFrom(socket);
    }
}

void CommandServer::readFrom(QLocalSocket* socket) {
    // Read in pieces no longer than a line may be, so that a client that never ends its line
    // costs no more than that.
    while (socket->bytesAvailable() > 0) {
        const QByteArray chunk = socket->read(protocol::maxLineBytes + 1);
        qsizetype from = 0;
        while (from < chunk.size()) {
            Client& client = clients_[socket];
            const qsizetype lf = chunk.indexOf('\n', from);
            if (lf < 0) {
                if (!client.overlong) {
                    client.line.append(chunk.mid(from));
                    // One more byte than a line for the CR a client may put before its LF.
                    if (client.line.size() > protocol::maxLineBytes + 1) {
                        client.overlong = true;
                        client.line.clear();
                    }
                }
                break;
            }
            if (client.overlong) {
                client.overlong = false;
                reply(socket, protocol::refused);
            } else {
                client.line.append(chunk.mid(from, lf - from));
                takeLine(socket, std::exchange(client.line, {}));
            }
            from = lf + 1;
        }
    }
}

void CommandServer::takeLine(QLocalSocket* socket, QByteArray line) {
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(line);
    if (line.size() > protocol::maxLineBytes || utf8.hasError() || queue_.size() >= maxQueued) {
        reply(socket, protocol::refused);
        return;
    }
    Command command{socket, text, false};
    if (line.startsWith(protocol::waitPrefix)) {
        command.wait = true;
        command.cmdStr = text.mid(protocol::waitPrefix.size());
    }
    queue_.push_back(std::move(command));
    reply(socket, protocol::ok);
    scheduleNext();
}

void CommandServer::scheduleNext() {
    if (running_ || scheduled_ || queue_.empty()) {
        return;
    }
    // From the event loop rather than from the socket's signal, so that a command never runs
    // inside the reading of the line that brought it.
    scheduled_ = true;
    QTimer::singleShot(0, this, [this] {
        scheduled_ = false;
        runNext();
    });
}

void CommandServer::runNext() {
    if (running_ || queue_.empty()) {
        return;
    }
    const Command command = queue_.front();
    queue_.pop_front();
    running_ = true;
    dialogs_.startCapture();
    QPointer<CommandServer> self(this);
    execute_(command.cmdStr);
    if (!self) {
        return;
    }
    const QStringList said = dialogs_.takeCaptured();
    running_ = false;
    if (command.wait && command.from) {
        for (const QString& text : said) {
            reply(command.from, protocol::messagePrefix.toByteArray() +
                                    core::UnattendedDialogs::oneLine(text).toUtf8());
        }
        reply(command.from, protocol::end);
    }
    scheduleNext();
}

void CommandServer::reply(QLocalSocket* socket, QByteArrayView line) {
    if (socket->state() != QLocalSocket::ConnectedState) {
        return;
    }
    socket->write(line.toByteArray() + '\n');
    // A command may keep the event loop away for seconds; the answer should not wait for it.
    socket->flush();
}

} // namespace stellwyn::indicator_config
