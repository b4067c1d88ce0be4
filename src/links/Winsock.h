#pragma once

#include <QAbstractSocket>
#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpSocket>

namespace stellwyn::links {

// Winsock1: the socket of the Ethernet link, on a QTcpSocket, so that a connect, a send and a
// lookup never hold the screen. Its states are told by the numbers the rest of the program
// tests: 0 closed, 4 resolving the host, 6 connecting, 7 connected, 8 closing, 9 failed.
class Winsock : public QObject {
    Q_OBJECT
public:
    static constexpr int sckClosed = 0;
    static constexpr int sckResolvingHost = 4;
    static constexpr int sckConnecting = 6;
    static constexpr int sckConnected = 7;
    static constexpr int sckClosing = 8;
    static constexpr int sckError = 9;
    static constexpr quint16 defaultPort = 2000;

    explicit Winsock(QObject* parent = nullptr);
    // Closes without telling anyone: whoever listens may be going too.
    ~Winsock() override;

    // Where Connect goes when it is given no host.
    QString RemoteHost;
    quint16 RemotePort = defaultPort;

    int State() const;
    // Starts the connection and returns at once; the outcome comes as Connected or Error.
    void Connect(const QString& host = {}, quint16 port = 0);
    void Close();
    // The bytes go out only while connected; false when they did not.
    bool SendData(const QByteArray& data);
    // Everything received and not yet taken, at most its newest 4 KiB.
    QByteArray GetData();

signals:
    void DataArrival(qint64 bytesTotal);
    void Connected();
    // The far end closed the connection, or it broke.
    void Closed();
    void Error(QAbstractSocket::SocketError error, const QString& text);

private:
    QTcpSocket socket_;
    bool failed_ = false;
};

} // namespace stellwyn::links
