#include "Ethernet.h"

#include "LinksLog.h"
#include "NetworkScaleRows.h"
#include "core/Dialogs.h"
#include "core/Module1.h"

namespace stellwyn::links {

namespace {
QString retrying() {
    return QStringLiteral("; trying again every %1 seconds.").arg(Ethernet::retryMs / 1000);
}
} // namespace

Ethernet::Ethernet(core::Module1& m, core::Dialogs& dialogs, const QString& address,
                   QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), addressText_(address.trimmed()) {
    if (!addressText_.isEmpty()) {
        address_ = core::parseScaleAddress(addressText_, &addressError_);
    }
    if (address_) {
        winsock_.RemoteHost = address_->host;
        winsock_.RemotePort = address_->port;
    }
    retry_.Tick = [this] {
        const int state = winsock_.State();
        if (state != Winsock::sckResolvingHost && state != Winsock::sckConnecting &&
            state != Winsock::sckConnected) {
            connectSocket();
        }
    };
    connect(&winsock_, &Winsock::Connected, this, [this] {
        handshake = false;
        retry_.setEnabled(false);
        status(outageTold_ ? QStringLiteral("Ethernet: connected to %1 again.").arg(where())
                           : QStringLiteral("Ethernet: connected to %1.").arg(where()));
        everConnected_ = true;
        outageTold_ = false;
    });
    connect(&winsock_, &Winsock::Closed, this,
            [this] { lost(QStringLiteral("the scales closed the connection")); });
    connect(&winsock_, &Winsock::Error, this,
            [this](QAbstractSocket::SocketError error, const QString& text) {
                lost(error == QAbstractSocket::HostNotFoundError
                         ? QStringLiteral("no host of that name was found")
                         : text);
            });
}

void Ethernet::connectSocket() {
    if (!address_) {
        status(addressText_.isEmpty()
                   ? QStringLiteral("Ethernet: no scale address is set; enter it on the Setup "
                                    "screen under Ethernet.")
                   : QStringLiteral("Ethernet: the scale address \"%1\" cannot be used. %2")
                         .arg(addressText_, addressError_));
        return;
    }
    winsock_.Connect();
}

bool Ethernet::winsockInitFailed() {
    if (m_.usbinitfail == 1 && winsock_.State() != Winsock::sckConnecting) {
        dialogs_.message(QStringLiteral("WinSock Init Failed"));
        return true;
    }
    return false;
}

void Ethernet::ethernet_connect() {
    closed_ = false;
    if (winsock_.State() == Winsock::sckClosed) {
        connectSocket();
    }
    if (winsockInitFailed()) {
        return;
    }
    fillNetworkTable(m_, dialogs_);
}

void Ethernet::ethernet_start() {
    if (winsock_.State() <= Winsock::sckClosed && address_) {
        winsock_.Connect();
    }
    if (winsockInitFailed()) {
        return;
    }
    fillNetworkTable(m_, dialogs_);
}

int Ethernet::parseweight(const QByteArray& data) {
    return parser ? parser(data) : -1;
}

void Ethernet::close() {
    closed_ = true;
    handshake = false;
    retry_.setEnabled(false);
    winsock_.Close();
}

void Ethernet::lost(const QString& reason) {
    handshake = false;
    if (closed_) {
        return;
    }
    if (!outageTold_) {
        outageTold_ = true;
        status(everConnected_
                   ? QStringLiteral("Ethernet: the connection to %1 was lost (%2)")
                             .arg(where(), reason) +
                         retrying()
                   : QStringLiteral("Ethernet: cannot connect to %1 (%2)").arg(where(), reason) +
                         retrying());
    }
    retry_.setInterval(retryMs);
    retry_.setEnabled(true);
}

void Ethernet::status(const QString& text) {
    qCInfo(lcSocket).noquote() << text;
    if (showStatus) {
        showStatus(text);
    }
}

QString Ethernet::where() const {
    return address_ ? address_->text() : addressText_;
}

} // namespace stellwyn::links
