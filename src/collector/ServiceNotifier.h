#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

namespace stellwyn::collector {

// Tells the service manager how the collector is doing, through the datagram socket that
// NOTIFY_SOCKET names (the sd_notify protocol: a few lines of KEY=value). Without that variable
// every call does nothing, so the collector runs the same from a shell. When the manager asks
// for a watchdog (WATCHDOG_USEC), a ping goes out from the event loop at half that period: a
// loop that hangs stops the pings and the manager restarts the service.
class ServiceNotifier : public QObject {
    Q_OBJECT
public:
    explicit ServiceNotifier(QObject* parent = nullptr);
    ~ServiceNotifier() override;

    void ready();
    void reloading();
    void stopping();
    void status(const QString& text);

private:
    void send(const QByteArray& state);

    int socket_ = -1;
    QByteArray address_;
    QTimer watchdog_;
};

} // namespace stellwyn::collector
