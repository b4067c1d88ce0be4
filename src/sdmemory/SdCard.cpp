#include "SdCard.h"

#include "CDriveInfo.h"

namespace stellwyn::sdmemory {

bool isSdCard(const CDriveInfo& drive) {
    return drive.TotalSpace() > 28500000 && drive.TotalSpace() < 33000000 &&
           drive.DriveTypeEx() == u"Removable" && drive.FileSystem() == u"FAT";
}

std::optional<QString> shownTimeZone(const TimeZoneInformation& zone) {
    switch (zone.state) {
    case timeZoneUnknown:
        return QStringLiteral("Time Zone Unknown!");
    case timeZoneStandard: {
        const qsizetype nul = zone.standardName.indexOf(QChar(u'\0'));
        return nul < 0 ? zone.standardName : zone.standardName.left(nul);
    }
    default:
        return std::nullopt;
    }
}

} // namespace stellwyn::sdmemory
