#include "SettingsStore.h"

#include "CoreLog.h"
#include "InputBound.h"

namespace stellwyn::core {

namespace {
QString keyOf(const QString& section, const QString& key) {
    return section + u'/' + key;
}
} // namespace

SettingsStore::SettingsStore(const QString& iniPath)
    : settings_(std::make_unique<QSettings>(iniPath, QSettings::IniFormat)) {}

QString SettingsStore::getSetting(const QString& section, const QString& key,
                                  const QString& defaultValue) const {
    return boundedValue(settings_->value(keyOf(section, key), defaultValue).toString(), lcCore(),
                        QStringLiteral("The setting ") + keyOf(section, key));
}

void SettingsStore::saveSetting(const QString& section, const QString& key, const QString& value) {
    settings_->setValue(keyOf(section, key), value);
    settings_->sync();
}

bool SettingsStore::contains(const QString& section, const QString& key) const {
    return settings_->contains(keyOf(section, key));
}

void SettingsStore::removeSetting(const QString& section, const QString& key) {
    settings_->remove(keyOf(section, key));
    settings_->sync();
}

QString SettingsStore::serialDevicePath(int port) const {
    return getSetting(QStringLiteral("Ports"), QStringLiteral("COM%1").arg(port),
                      QStringLiteral("/dev/ttyS%1").arg(port - 1));
}

QString SettingsStore::fileName() const {
    return settings_->fileName();
}

} // namespace stellwyn::core
