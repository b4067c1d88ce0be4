#include "ScaleAddress.h"

#include "SettingsStore.h"

namespace stellwyn::core {

namespace {
const QString kSection = QStringLiteral("Ethernet");
const QString kKey = QStringLiteral("Address");

QString refusal() {
    return QStringLiteral("Enter a host name or IP address, optionally followed by a colon and a "
                          "port from 1 to 65535.");
}
} // namespace

QString ScaleAddress::text() const {
    const QString shownHost = host.contains(u':') ? u'[' + host + u']' : host;
    return shownHost + u':' + QString::number(port);
}

std::optional<ScaleAddress> parseScaleAddress(const QString& text, QString* error) {
    const QString t = text.trimmed();
    ScaleAddress address;
    QString portText;
    if (t.startsWith(u'[')) {
        const qsizetype close = t.indexOf(u']');
        if (close < 0) {
            *error = refusal();
            return std::nullopt;
        }
        address.host = t.mid(1, close - 1);
        const QString rest = t.mid(close + 1);
        if (!rest.isEmpty()) {
            if (!rest.startsWith(u':')) {
                *error = refusal();
                return std::nullopt;
            }
            portText = rest.mid(1);
        }
    } else if (t.count(u':') == 1) {
        const qsizetype colon = t.indexOf(u':');
        address.host = t.left(colon);
        portText = t.mid(colon + 1);
    } else {
        // No colon, or a bare IPv6 address.
        address.host = t;
    }
    if (address.host.isEmpty() || address.host.contains(u' ')) {
        *error = refusal();
        return std::nullopt;
    }
    if (t.startsWith(u'[') || t.count(u':') == 1) {
        if (!portText.isEmpty() || t.endsWith(u':')) {
            bool ok = false;
            const int port = portText.toInt(&ok);
            if (!ok || port < 1 || port > 65535) {
                *error = refusal();
                return std::nullopt;
            }
            address.port = static_cast<quint16>(port);
        }
    }
    return address;
}

QString storedScaleAddress(const SettingsStore& settings) {
    return settings.getSetting(kSection, kKey, QString());
}

void storeScaleAddress(SettingsStore& settings, const QString& text) {
    settings.saveSetting(kSection, kKey, text.trimmed());
}

} // namespace stellwyn::core
