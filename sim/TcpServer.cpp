#include "TcpServer.h"

namespace stellwyn::sim {

QByteArray TcpServer::greeting() {
    return QByteArrayLiteral("?\r\n");
}

TcpServer::TcpServer(LineDevice& device, const core::Clock& clock, QObject* parent)
    : QObject(parent), pump_(device, clock) {
    connect(&pump_, &RealTimePump::output, this, &TcpServer::writeOut);
    connect(&server_, &QTcpServer::newConnection, this, &TcpServer::onNewConnection);
}

bool TcpServer::listen(quint16 port, const QHostAddress& address) {
    if (!server_.listen(address, port)) {
        return false;
    }
    pump_.run();
    return true;
}

void TcpServer::onNewConnection() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        socket->setParent(this);
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        clients_.append(socket);
        // The gateway's word that it is ready, which the program waits for before it takes
        // any reply as a reading.
        socket->write(greeting());
        connect(socket, &QTcpSocket::readyRead, this,
                [this, socket] { pump_.feed(socket->readAll()); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            clients_.removeAll(socket);
            socket->deleteLater();
        });
    }
}

void TcpServer::writeOut(const QByteArray& bytes) {
    for (const QPointer<QTcpSocket>& socket : clients_) {
        if (socket) {
            socket->write(bytes);
        }
    }
}

} // namespace stellwyn::sim
