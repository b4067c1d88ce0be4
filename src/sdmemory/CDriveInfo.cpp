#include "CDriveInfo.h"

#include "core/FatalError.h"

#include <QDir>
#include <limits>

namespace stellwyn::sdmemory {

namespace {

QString cutAtNul(const QString& text) {
    const qsizetype nul = text.indexOf(QChar(u'\0'));
    return nul < 0 ? text : text.left(nul);
}

// "#,##0": whole number with a comma every three digits.
QString grouped(ByteCount value) {
    QString digits = QString::number(value);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3) {
        digits.insert(at, u',');
    }
    return digits;
}

// The size in units, kept to four decimals as the fixed-point type the sizes are scaled into
// holds it: rounded half to even, as that type rounds.
std::uint64_t scaledToFourDecimals(ByteCount size, ByteCount unit) {
    // unit is at most 2^40 and size / unit below 2^24, so nothing here overflows 64 bits.
    const std::uint64_t fraction = (size % unit) * 10000U;
    std::uint64_t quotient = (size / unit) * 10000U + fraction / unit;
    const std::uint64_t twiceRest = (fraction % unit) * 2U;
    if (twiceRest > unit || (twiceRest == unit && (quotient & 1U) != 0)) {
        ++quotient;
    }
    return quotient;
}

// "0", "0.0" or "0.00" of a four-decimal value, rounding half away from zero.
QString withDecimals(std::uint64_t scaled, int decimals) {
    std::uint64_t divisor = 1;
    for (int i = decimals; i < 4; ++i) {
        divisor *= 10;
    }
    const std::uint64_t rounded = (scaled + divisor / 2) / divisor;
    if (decimals == 0) {
        return QString::number(rounded);
    }
    std::uint64_t unitDivisor = decimals == 1 ? 10 : 100;
    return QStringLiteral("%1.%2")
        .arg(rounded / unitDivisor)
        .arg(rounded % unitDivisor, decimals, 10, QLatin1Char('0'));
}

} // namespace

CDriveInfo::CDriveInfo(DriveQueries& queries) : queries_(queries) {
    hasDiskFreeEx_ = queries_.hasDiskFreeEx();
    // The current directory's volume, as the drive of the current directory would be.
    root_ = QDir::currentPath();
    if (!root_.endsWith(QDir::separator())) {
        root_ += QDir::separator();
    }
    Refresh();
}

void CDriveInfo::setDrive(const QString& d) {
    QString root = d;
    if (root.size() >= 2 && root.at(1) == u':') {
        root = root.left(2).toUpper();
    }
    if (!root.endsWith(QDir::separator())) {
        root += QDir::separator();
    }
    root_ = root;
    Refresh();
}

bool CDriveInfo::setLabel(const QString& text) {
    labelError_.clear();
    if (!queries_.setVolumeLabel(root_, text, labelError_)) {
        return false;
    }
    readVolume();
    return true;
}

std::int32_t CDriveInfo::DriveType() const {
    return queries_.driveType(root_);
}

QString CDriveInfo::driveTypeText(std::int32_t type) {
    switch (type) {
    case driveNoRootDir:
        return QStringLiteral("No Root Directory");
    case driveRemovable:
        return QStringLiteral("Removable");
    case driveFixed:
        return QStringLiteral("Fixed");
    case driveRemote:
        return QStringLiteral("Remote");
    case driveCdrom:
        return QStringLiteral("CD-ROM");
    case driveRamDisk:
        return QStringLiteral("RAM Disk");
    default:
        return QStringLiteral("Unknown");
    }
}

QString CDriveInfo::DriveTypeEx() const {
    return driveTypeText(DriveType());
}

bool CDriveInfo::FileSystemFlag(std::int32_t flag) const {
    return (fileSystemFlags_ & flag) == flag;
}

QString CDriveInfo::SerialNumberEx() const {
    if (!present_) {
        return {};
    }
    const QString hex = QStringLiteral("%1")
                            .arg(static_cast<std::uint32_t>(serialNumber_), 8, 16, QLatin1Char('0'))
                            .toUpper();
    return hex.left(4) + u'-' + hex.right(4);
}

QString CDriveInfo::FormatSize(ByteCount size, bool withBytes) {
    if (size < 1024) {
        return grouped(size) + QStringLiteral(" byte") +
               (size == 1 ? QString() : QStringLiteral("s"));
    }
    ByteCount unit = 1024;
    QString unitName = QStringLiteral(" KB");
    if (size >= (ByteCount{1} << 40)) {
        unit = ByteCount{1} << 40;
        unitName = QStringLiteral(" TB");
    } else if (size >= (ByteCount{1} << 30)) {
        unit = ByteCount{1} << 30;
        unitName = QStringLiteral(" GB");
    } else if (size >= (ByteCount{1} << 20)) {
        unit = ByteCount{1} << 20;
        unitName = QStringLiteral(" MB");
    }
    const std::uint64_t scaled = scaledToFourDecimals(size, unit);
    const int decimals = scaled >= 100 * 10000 ? 0 : (scaled >= 10 * 10000 ? 1 : 2);
    QString text = withDecimals(scaled, decimals) + unitName;
    if (withBytes) {
        text += QStringLiteral(" (") + grouped(size) + QStringLiteral(" bytes)");
    }
    return text;
}

void CDriveInfo::Refresh() {
    readSizes();
    if (present_) {
        readVolume();
    }
}

void CDriveInfo::readSizes() {
    availableSpace_ = freeSpace_ = totalSpace_ = 0;
    present_ = false;
    if (hasDiskFreeEx_) {
        DiskSpace space;
        if (queries_.diskFreeSpaceEx(root_, space)) {
            availableSpace_ = space.available;
            totalSpace_ = space.total;
            freeSpace_ = space.free;
            present_ = true;
        }
        return;
    }
    std::uint32_t sectorsPerCluster = 0;
    std::uint32_t bytesPerSector = 0;
    std::uint32_t freeClusters = 0;
    std::uint32_t totalClusters = 0;
    if (!queries_.diskFreeSpace(root_, sectorsPerCluster, bytesPerSector, freeClusters,
                                totalClusters)) {
        return;
    }
    // The older call's products are 32-bit: a drive past 2 GB overflows them.
    const auto product = [](std::uint64_t a, std::uint64_t b, std::uint64_t c) {
        const std::uint64_t p = a * b * c;
        if (p > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
            throw core::FatalError(QStringLiteral("Overflow"));
        }
        return p;
    };
    totalSpace_ = product(sectorsPerCluster, bytesPerSector, totalClusters);
    freeSpace_ = product(sectorsPerCluster, bytesPerSector, freeClusters);
    availableSpace_ = freeSpace_;
    present_ = true;
}

void CDriveInfo::readVolume() {
    VolumeInformation volume;
    if (queries_.volumeInformation(root_, volume)) {
        label_ = cutAtNul(volume.label);
        fileSystem_ = cutAtNul(volume.fileSystemName);
        serialNumber_ = static_cast<std::int32_t>(volume.serialNumber);
        maxComponentLength_ = static_cast<std::int32_t>(volume.maxComponentLength);
        fileSystemFlags_ = static_cast<std::int32_t>(volume.fileSystemFlags);
        present_ = true;
    } else {
        label_.clear();
        fileSystem_.clear();
        present_ = false;
    }
}

} // namespace stellwyn::sdmemory
