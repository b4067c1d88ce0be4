#include "links/FtdiFactory.h"

#include "core/SettingsStore.h"
#include "links/D2xxFtdi.h"
#include "links/KernelFtdi.h"
#include "links/ListSetting.h"
#include "links/SimFtdi.h"

namespace stellwyn::links {

std::unique_ptr<FtdiApi> makeFtdiApi(const core::SettingsStore& settings,
                                     std::function<void(const QString&)> showStatus,
                                     core::Clock& clock) {
    const QString section = QStringLiteral("USB");
    const QString backend =
        settings.getSetting(section, QStringLiteral("Backend"), QStringLiteral("kernel"))
            .trimmed()
            .toLower();
    if (backend == u"d2xx") {
        return std::make_unique<D2xxFtdi>(settings.getSetting(section,
                                                              QStringLiteral("D2xxLibrary"),
                                                              QStringLiteral("libftd2xx.so")),
                                          std::move(showStatus));
    }
    if (backend == u"sim") {
        const QString key = QStringLiteral("SimNetIds");
        const QStringList entries = settings.contains(section, key)
                                        ? commaListSetting(settings, section, key)
                                        : QStringList{QStringLiteral("130")};
        return std::make_unique<SimFtdi>(simNetIds(entries), clock);
    }
    return std::make_unique<KernelFtdi>(settings, std::move(showStatus));
}

} // namespace stellwyn::links
