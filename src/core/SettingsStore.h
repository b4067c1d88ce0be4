#pragma once

#include <QSettings>
#include <QString>
#include <memory>

namespace stellwyn::core {

// The registry-style settings store: stellwyn.ini in the application home, one section per
// subject (Settings for the frame's place, Ports for the serial device paths, USB for the
// adapter backend). Values are written as they change.
class SettingsStore {
public:
    explicit SettingsStore(const QString& iniPath);

    QString getSetting(const QString& section, const QString& key,
                       const QString& defaultValue) const;
    void saveSetting(const QString& section, const QString& key, const QString& value);
    bool contains(const QString& section, const QString& key) const;
    // Takes the key out, so that its default applies again.
    void removeSetting(const QString& section, const QString& key);

    // Device path of serial port n: Ports/COMn, else /dev/ttyS<n-1>.
    QString serialDevicePath(int port) const;

    QString fileName() const;

private:
    std::unique_ptr<QSettings> settings_;
};

} // namespace stellwyn::core
