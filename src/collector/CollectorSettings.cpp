#include "CollectorSettings.h"

#include "core/SettingsStore.h"

namespace stellwyn::collector {

namespace {
const QString section = QStringLiteral("Collector");
}

CollectorSettings CollectorSettings::read(const core::SettingsStore& settings, QString* problems) {
    CollectorSettings s;
    const auto complain = [problems](const QString& key, const QString& value,
                                     const QString& expected) {
        if (!problems->isEmpty()) {
            *problems += u'\n';
        }
        *problems += QStringLiteral("Collector/%1 = \"%2\" is not %3; the default applies")
                         .arg(key, value, expected);
    };
    const auto flag = [&](const QString& key, bool fallback) {
        const QString value = settings.getSetting(section, key, QString()).trimmed().toLower();
        if (value.isEmpty()) {
            return fallback;
        }
        if (value == u"true" || value == u"1" || value == u"yes" || value == u"on") {
            return true;
        }
        if (value == u"false" || value == u"0" || value == u"no" || value == u"off") {
            return false;
        }
        complain(key, value, QStringLiteral("true or false"));
        return fallback;
    };

    const QString mode = settings.getSetting(section, QStringLiteral("Mode"), QString()).trimmed();
    if (mode.compare(u"single", Qt::CaseInsensitive) == 0) {
        s.mode = Mode::single;
    } else if (mode.compare(u"network", Qt::CaseInsensitive) == 0) {
        s.mode = Mode::network;
    } else if (!mode.isEmpty()) {
        complain(QStringLiteral("Mode"), mode, QStringLiteral("single or network"));
    }
    s.poll = flag(QStringLiteral("Poll"), false);
    s.autoSave = flag(QStringLiteral("AutoSave"), false);
    s.logTimers = flag(QStringLiteral("LogTimers"), false);

    s.pollTime = settings.getSetting(section, QStringLiteral("PollTime"), QString()).trimmed();
    bool ok = false;
    const double seconds = s.pollTime.toDouble(&ok);
    if (!s.pollTime.isEmpty() && (!ok || seconds <= 0 || seconds > 65.535)) {
        complain(QStringLiteral("PollTime"), s.pollTime,
                 QStringLiteral("a number of seconds up to 65.535"));
        s.pollTime.clear();
    }
    const QString scale =
        settings.getSetting(section, QStringLiteral("Scale"), QString()).trimmed();
    if (!scale.isEmpty()) {
        s.scale = scale.toInt(&ok);
        if (!ok || s.scale < 0) {
            complain(QStringLiteral("Scale"), scale, QStringLiteral("a scale's place, from 0"));
            s.scale = 0;
        }
    }
    return s;
}

} // namespace stellwyn::collector
