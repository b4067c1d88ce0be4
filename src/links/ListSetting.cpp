#include "links/ListSetting.h"

#include "core/SettingsStore.h"

#include <QSettings>

namespace stellwyn::links {

QStringList commaListSetting(const core::SettingsStore& settings, const QString& section,
                             const QString& key) {
    const QVariant value =
        QSettings(settings.fileName(), QSettings::IniFormat).value(section + u'/' + key);
    const QStringList parts = value.typeId() == QMetaType::QStringList
                                  ? value.toStringList()
                                  : value.toString().split(u',');
    QStringList entries;
    for (const QString& part : parts) {
        if (!part.trimmed().isEmpty()) {
            entries << part.trimmed();
        }
    }
    return entries;
}

} // namespace stellwyn::links
