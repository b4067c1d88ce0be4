#pragma once

#include "RealTimePump.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

namespace stellwyn::sim {

// The Ethernet link: indicators behind a TCP endpoint. All connected clients share the one
// line; what the device sends goes to each of them. Each new client is first greeted with "?"
// CR LF, as the scales' network gateway does.
class TcpServer : public QObject {
    Q_OBJECT
public:
    TcpServer(LineDevice& device, const core::Clock& clock, QObject* parent = nullptr);

    // Port 0 takes a free port; port() tells which.
    bool listen(quint16 port, const QHostAddress& address = QHostAddress::LocalHost);
    quint16 port() const { return server_.serverPort(); }
    QString errorString() const { return server_.errorString(); }
    static QByteArray greeting();
    int clientCount() const { return static_cast<int>(clients_.size()); }

private:
    void onNewConnection();
    void writeOut(const QByteArray& bytes);

    RealTimePump pump_;
    QTcpServer server_;
    QList<QPointer<QTcpSocket>> clients_;
};

} // namespace stellwyn::sim
