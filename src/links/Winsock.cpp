#include "Winsock.h"

#include "core/FatalError.h"
#include "core/InputBound.h"
#include "links/LinksLog.h"

namespace stellwyn::links {

Winsock::Winsock(QObject* parent) : QObject(parent) {
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    // The socket's signals enter the program's handlers here, through the guard for untrapped
    // errors.
    connect(&socket_, &QTcpSocket::connected, this, [this] {
        failed_ = false;
        core::runHandler([this] { emit Connected(); });
    });
    connect(&socket_, &QTcpSocket::readyRead, this, [this] {
        // A far end that talks faster than it is read keeps only its newest bytes.
        if (socket_.bytesAvailable() > core::kInputCap) {
            socket_.skip(socket_.bytesAvailable() - core::kInputCap);
        }
        core::runHandler([this] { emit DataArrival(socket_.bytesAvailable()); });
    });
    connect(&socket_, &QTcpSocket::disconnected, this,
            [this] { core::runHandler([this] { emit Closed(); }); });
    connect(&socket_, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
        // The far end closing is told by Closed alone.
        if (error == QAbstractSocket::RemoteHostClosedError) {
            return;
        }
        failed_ = true;
        core::runHandler([&] { emit Error(error, socket_.errorString()); });
    });
}

Winsock::~Winsock() {
    QObject::disconnect(&socket_, nullptr, this, nullptr);
    socket_.abort();
}

int Winsock::State() const {
    switch (socket_.state()) {
    case QAbstractSocket::HostLookupState:
        return sckResolvingHost;
    case QAbstractSocket::ConnectingState:
        return sckConnecting;
    case QAbstractSocket::ConnectedState:
        return sckConnected;
    case QAbstractSocket::ClosingState:
        return sckClosing;
    default:
        return failed_ ? sckError : sckClosed;
    }
}

void Winsock::Connect(const QString& host, quint16 port) {
    failed_ = false;
    socket_.abort();
    socket_.connectToHost(host.isEmpty() ? RemoteHost : host, port == 0 ? RemotePort : port);
}

void Winsock::Close() {
    failed_ = false;
    socket_.abort();
}

bool Winsock::SendData(const QByteArray& data) {
    if (State() != sckConnected) {
        return false;
    }
    qCDebug(lcSocket, "sent %s", data.toHex(' ').constData());
    return socket_.write(data) == data.size();
}

QByteArray Winsock::GetData() {
    QByteArray data = socket_.readAll();
    if (!data.isEmpty()) {
        qCDebug(lcSocket, "received %s", data.toHex(' ').constData());
    }
    return data;
}

} // namespace stellwyn::links
