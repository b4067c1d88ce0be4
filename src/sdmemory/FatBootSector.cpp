#include "FatBootSector.h"

#include <QFile>

namespace stellwyn::sdmemory {

namespace {

std::uint32_t le32(const QByteArray& b, int at) {
    return static_cast<std::uint32_t>(static_cast<std::uint8_t>(b[at])) |
           static_cast<std::uint32_t>(static_cast<std::uint8_t>(b[at + 1])) << 8 |
           static_cast<std::uint32_t>(static_cast<std::uint8_t>(b[at + 2])) << 16 |
           static_cast<std::uint32_t>(static_cast<std::uint8_t>(b[at + 3])) << 24;
}

std::uint16_t le16(const QByteArray& b, int at) {
    return static_cast<std::uint16_t>(static_cast<std::uint8_t>(b[at]) |
                                      static_cast<std::uint8_t>(b[at + 1]) << 8);
}

} // namespace

std::optional<FatVolume> parseFatBootSector(const QByteArray& sector) {
    if (sector.size() < 512 || static_cast<std::uint8_t>(sector[510]) != 0x55 ||
        static_cast<std::uint8_t>(sector[511]) != 0xAA || le16(sector, 11) == 0) {
        return std::nullopt;
    }
    // FAT32 keeps no root directory entries in the boot sector's count, and its extended
    // block (signature 0x29) sits 28 bytes further on.
    const bool fat32 = le16(sector, 17) == 0 && le16(sector, 22) == 0;
    const int extended = fat32 ? 0x40 : 0x24;
    if (static_cast<std::uint8_t>(sector[extended + 2]) != 0x29) {
        return std::nullopt;
    }
    FatVolume volume;
    volume.fileSystem = fat32 ? QStringLiteral("FAT32") : QStringLiteral("FAT");
    volume.serialNumber = le32(sector, extended + 3);
    volume.label = QString::fromLatin1(sector.mid(extended + 7, 11)).trimmed();
    // The formatter's word for a volume without a label.
    if (volume.label == u"NO NAME") {
        volume.label.clear();
    }
    return volume;
}

std::optional<FatVolume> readFatBootSector(const QString& path) {
    QFile device(path);
    if (!device.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return parseFatBootSector(device.read(512));
}

} // namespace stellwyn::sdmemory
