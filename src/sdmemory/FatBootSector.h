#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace stellwyn::sdmemory {

// What a FAT volume's boot sector says of it.
struct FatVolume {
    // "FAT" for FAT12 and FAT16, "FAT32", as the system names them.
    QString fileSystem;
    QString label;
    std::uint32_t serialNumber = 0;
};

// Reads the first sector of a FAT volume; nothing when it is not one.
std::optional<FatVolume> parseFatBootSector(const QByteArray& sector);
// The same from a device or an image file; nothing when it cannot be read.
std::optional<FatVolume> readFatBootSector(const QString& path);

} // namespace stellwyn::sdmemory
