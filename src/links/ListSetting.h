#pragma once

#include <QStringList>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::links {

// The entries of a comma-separated setting, trimmed, empty ones dropped. A list typed into the
// settings file by hand (Devices=/dev/ttyUSB0,/dev/ttyUSB1) is stored by the file format as a
// list rather than as one text, so it is read here in both forms.
QStringList commaListSetting(const core::SettingsStore& settings, const QString& section,
                             const QString& key);

} // namespace stellwyn::links
