#pragma once

#include "sdmemory/DriveQueries.h"

#include <QMap>
#include <QStringList>

namespace stellwyn::sdtest {

using namespace stellwyn::sdmemory;

// The system's drives as a test sets them: each root with its kind, and, when a medium is in,
// its sizes and volume data.
class FakeDriveQueries final : public DriveQueries {
public:
    struct Drive {
        std::int32_t type = driveFixed;
        bool present = true;
        DiskSpace space;
        VolumeInformation volume;
    };
    QMap<QString, Drive> drives;
    QStringList order;
    TimeZoneInformation zone;

    void add(const QString& root, const Drive& drive) {
        drives.insert(root, drive);
        order << root;
    }
    static Drive card(std::uint64_t total, const QString& fs = QStringLiteral("FAT")) {
        Drive d;
        d.type = driveRemovable;
        d.space = {total / 2, total, total / 2};
        d.volume.fileSystemName = fs;
        d.volume.label = QStringLiteral("CARD");
        return d;
    }

    QStringList roots() override { return order; }
    std::int32_t driveType(const QString& root) override {
        return drives.contains(root) ? drives[root].type : driveNoRootDir;
    }
    bool hasDiskFreeEx() override { return true; }
    bool diskFreeSpaceEx(const QString& root, DiskSpace& out) override {
        if (!drives.contains(root) || !drives[root].present) {
            return false;
        }
        out = drives[root].space;
        return true;
    }
    bool diskFreeSpace(const QString&, std::uint32_t&, std::uint32_t&, std::uint32_t&,
                       std::uint32_t&) override {
        return false;
    }
    bool volumeInformation(const QString& root, VolumeInformation& out) override {
        if (!drives.contains(root) || !drives[root].present) {
            return false;
        }
        out = drives[root].volume;
        return true;
    }
    bool setVolumeLabel(const QString& root, const QString& label, QString&) override {
        drives[root].volume.label = label;
        return true;
    }
    TimeZoneInformation timeZoneInformation() override { return zone; }
};

constexpr std::uint64_t card32 = 31'000'000;

} // namespace stellwyn::sdtest
