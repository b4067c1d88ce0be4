#pragma once

#include "DriveQueries.h"

#include <QList>
#include <QString>

namespace stellwyn::sdmemory {

// One line of /proc/self/mountinfo, its escapes ("\040") undone.
struct MountEntry {
    QString mountPoint;
    QString fileSystemType;
    QString source;
    bool readOnly = false;
};

QList<MountEntry> parseMountInfo(const QByteArray& text);

// The drives as Linux has them: every mounted volume a person would call a drive (block
// devices, network shares, RAM disks; not the kernel's own file systems), the root first.
// Kind from sysfs, sizes from statvfs, FAT label and serial from the boot sector where the
// device may be read, else from the names udev gives in /dev/disk.
class LinuxDriveQueries final : public DriveQueries {
public:
    struct Paths {
        QString mountInfo = QStringLiteral("/proc/self/mountinfo");
        QString sysBlock = QStringLiteral("/sys/class/block");
        QString disksByUuid = QStringLiteral("/dev/disk/by-uuid");
        QString disksByLabel = QStringLiteral("/dev/disk/by-label");
    };
    LinuxDriveQueries() = default;
    explicit LinuxDriveQueries(Paths paths) : paths_(std::move(paths)) {}

    QStringList roots() override;
    std::int32_t driveType(const QString& root) override;
    bool hasDiskFreeEx() override { return true; }
    bool diskFreeSpaceEx(const QString& root, DiskSpace& out) override;
    bool diskFreeSpace(const QString& root, std::uint32_t& sectorsPerCluster,
                       std::uint32_t& bytesPerSector, std::uint32_t& freeClusters,
                       std::uint32_t& totalClusters) override;
    bool volumeInformation(const QString& root, VolumeInformation& out) override;
    bool setVolumeLabel(const QString& root, const QString& label, QString& error) override;
    TimeZoneInformation timeZoneInformation() override;

private:
    QList<MountEntry> drives();
    // The mounted volume that holds the path, if any.
    std::optional<MountEntry> volumeOf(const QString& root);
    bool removable(const QString& device);
    QString udevName(const QString& directory, const QString& device);

    Paths paths_;
};

} // namespace stellwyn::sdmemory
