#pragma once

#include "DriveQueries.h"

#include <QString>
#include <optional>

namespace stellwyn::sdmemory {

class CDriveInfo;

// The indicator's card: 32 MB, removable, FAT. Nothing else qualifies.
bool isSdCard(const CDriveInfo& drive);

// What the time-zone boxes show: the standard name, or the unknown text; nothing when the
// zone is in its daylight half and the box keeps what it had.
std::optional<QString> shownTimeZone(const TimeZoneInformation& zone);

} // namespace stellwyn::sdmemory
