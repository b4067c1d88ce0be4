// The settings file as a person may have typed it: the comma lists read from it (the kernel
// devices, the simulated NetIDs) whatever the file holds.
#include "core/SettingsStore.h"
#include "links/ListSetting.h"
#include "links/SimFtdi.h"

#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

using namespace stellwyn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("stellwyn.ini"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            return 0;
        }
        file.write("[USB]\n");
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    const core::SettingsStore settings(path);
    for (const char* key : {"Devices", "SimNetIds"}) {
        const QStringList entries =
            links::commaListSetting(settings, QStringLiteral("USB"), QString::fromLatin1(key));
        for (const int id : links::simNetIds(entries)) {
            if (id < 0 || id > 255) {
                __builtin_trap();
            }
        }
    }
    return 0;
}
