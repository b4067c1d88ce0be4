#include "links/LineSettings.h"

#include <QStringList>

namespace stellwyn::links {

std::optional<LineSettings> parseLineSettings(const QString& text) {
    const QStringList parts = text.split(u',');
    if (parts.size() != 4) {
        return std::nullopt;
    }
    LineSettings settings;
    bool ok = false;
    settings.baud = parts[0].trimmed().toInt(&ok);
    if (!ok || settings.baud <= 0) {
        return std::nullopt;
    }
    const QString parity = parts[1].trimmed().toUpper();
    if (parity.size() != 1 || !QStringLiteral("NEOMS").contains(parity)) {
        return std::nullopt;
    }
    settings.parity = parity.at(0).toLatin1();
    settings.dataBits = parts[2].trimmed().toInt(&ok);
    if (!ok || settings.dataBits < 4 || settings.dataBits > 8) {
        return std::nullopt;
    }
    const QString stop = parts[3].trimmed();
    if (stop == u"1") {
        settings.stopBits = 1;
    } else if (stop == u"1.5") {
        settings.stopBits = 15;
    } else if (stop == u"2") {
        settings.stopBits = 2;
    } else {
        return std::nullopt;
    }
    return settings;
}

} // namespace stellwyn::links
