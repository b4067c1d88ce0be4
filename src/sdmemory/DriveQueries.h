#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

namespace stellwyn::sdmemory {

// What a volume says of itself, as the drive information asks for it.
struct VolumeInformation {
    QString label;
    std::uint32_t serialNumber = 0;
    std::uint32_t maxComponentLength = 0;
    std::uint32_t fileSystemFlags = 0;
    QString fileSystemName;
};

struct DiskSpace {
    std::uint64_t available = 0;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
};

// The kinds of drive, in the numbering the drive list and the card search compare.
enum DriveKind : std::int32_t {
    driveUnknown = 0,
    driveNoRootDir = 1,
    driveRemovable = 2,
    driveFixed = 3,
    driveRemote = 4,
    driveCdrom = 5,
    driveRamDisk = 6,
};

// Whether the system's zone is known, and in which half of the year it stands now.
enum TimeZoneState : int { timeZoneUnknown = 0, timeZoneStandard = 1, timeZoneDaylight = 2 };

struct TimeZoneInformation {
    TimeZoneState state = timeZoneUnknown;
    QString standardName;
};

// The operating system's answers about drives and the time zone. A drive root is a mount point
// ending in the path separator; the card search and the drive list both walk roots().
class DriveQueries {
public:
    virtual ~DriveQueries() = default;

    virtual QStringList roots() = 0;
    virtual std::int32_t driveType(const QString& root) = 0;
    virtual bool hasDiskFreeEx() = 0;
    virtual bool diskFreeSpaceEx(const QString& root, DiskSpace& out) = 0;
    // The older call: sectors per cluster, bytes per sector, free and total clusters.
    virtual bool diskFreeSpace(const QString& root, std::uint32_t& sectorsPerCluster,
                               std::uint32_t& bytesPerSector, std::uint32_t& freeClusters,
                               std::uint32_t& totalClusters) = 0;
    virtual bool volumeInformation(const QString& root, VolumeInformation& out) = 0;
    // An empty label clears it. On failure, error says why in words an operator can act on.
    virtual bool setVolumeLabel(const QString& root, const QString& label, QString& error) = 0;
    virtual TimeZoneInformation timeZoneInformation() = 0;
};

} // namespace stellwyn::sdmemory
