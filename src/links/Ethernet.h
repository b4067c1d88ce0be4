#pragma once

#include "Winsock.h"
#include "core/Controls.h"
#include "core/ScaleAddress.h"

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

namespace stellwyn::core {
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {

// The Ethernet link: the scales' serial bus behind one network endpoint. Made by the main
// screen's activation on "Ethernet" and gone with the screen. It connects, builds the scale
// table from the active RS485 rows, and hands each reply to the screen's parser. A connection
// that fails or drops is told once on the status bar and tried again every few seconds until
// it comes back; nothing of this waits on the network.
class Ethernet : public QObject {
    Q_OBJECT
public:
    static constexpr int retryMs = 5000;

    // `address` is the text of the scale address setting.
    Ethernet(core::Module1& m, core::Dialogs& dialogs, const QString& address,
             QObject* parent = nullptr);

    Winsock& Winsock1() { return winsock_; }
    // Ticked by the screen's timer driver while a connection is wanted and missing.
    core::Timer& retryTimer() { return retry_; }

    // Connects to the address and fills the scale table.
    void ethernet_connect();
    // The activation's copy of ethernet_connect: connects only a closed socket, to the address
    // the socket already holds.
    void ethernet_start();
    // Closes the connection for good, with the screen: no retry and no further word.
    void close();
    // Hands a received text to the parser; the index of the scale it was for, or -1.
    int parseweight(const QByteArray& data);

    // Set by the "?" that the far end sends first on each connection; replies count only after
    // it. Cleared whenever the connection goes.
    bool handshake = false;

    std::function<int(const QByteArray& data)> parser;
    // A line for the frame's status bar.
    std::function<void(const QString& text)> showStatus;

private:
    void connectSocket();
    // usbinitfail, a relic of the USB start that this start shares, can stop it here.
    bool winsockInitFailed();
    void lost(const QString& reason);
    void status(const QString& text);
    QString where() const;

    core::Module1& m_;
    core::Dialogs& dialogs_;
    QString addressText_;
    std::optional<core::ScaleAddress> address_;
    QString addressError_;
    Winsock winsock_;
    core::Timer retry_;
    bool everConnected_ = false;
    // The outage is told once, and its end once.
    bool outageTold_ = false;
    bool closed_ = false;
};

} // namespace stellwyn::links
