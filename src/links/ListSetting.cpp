#include "links/ListSetting.h"

#include "core/InputBound.h"
#include "core/SettingsStore.h"
#include "links/LinksLog.h"

#include <QSettings>

namespace stellwyn::links {

QStringList commaListSetting(const core::SettingsStore& settings, const QString& section,
                             const QString& key) {
    const QString name = section + u'/' + key;
    const QVariant value = QSettings(settings.fileName(), QSettings::IniFormat).value(name);
    const QString text = value.typeId() == QMetaType::QStringList ? value.toStringList().join(u',')
                                                                  : value.toString();
    const QStringList parts =
        core::boundedValue(text, lcFtdi(), QStringLiteral("The setting ") + name).split(u',');
    QStringList entries;
    for (const QString& part : parts) {
        if (!part.trimmed().isEmpty()) {
            entries << part.trimmed();
        }
    }
    return entries;
}

} // namespace stellwyn::links
