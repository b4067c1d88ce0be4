#include "LinuxDriveQueries.h"

#include "FatBootSector.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QTimeZone>
#include <sys/statvfs.h>

namespace stellwyn::sdmemory {

namespace {

QString unescaped(const QByteArray& field) {
    QByteArray out;
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int code = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out.append(static_cast<char>(code));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return QString::fromUtf8(out);
}

bool isRemote(const QString& type) {
    static const QSet<QString> remote{
        QStringLiteral("nfs"),  QStringLiteral("nfs4"),       QStringLiteral("cifs"),
        QStringLiteral("smb3"), QStringLiteral("fuse.sshfs"), QStringLiteral("9p"),
        QStringLiteral("afs"),  QStringLiteral("ceph"),       QStringLiteral("glusterfs")};
    return remote.contains(type);
}

bool isRam(const QString& type) {
    return type == u"tmpfs" || type == u"ramfs";
}

bool isFat(const QString& type) {
    return type == u"vfat" || type == u"msdos";
}

QString withSeparator(QString path) {
    if (!path.endsWith(QDir::separator())) {
        path += QDir::separator();
    }
    return path;
}

// The file system's name as the drive information reports it.
QString systemName(const MountEntry& entry, quint64 totalBytes) {
    if (isFat(entry.fileSystemType)) {
        if (const std::optional<FatVolume> fat = readFatBootSector(entry.source)) {
            return fat->fileSystem;
        }
        // Formatters put volumes under 512 MB on FAT16 and larger ones on FAT32.
        return totalBytes < 512ULL * 1024 * 1024 ? QStringLiteral("FAT") : QStringLiteral("FAT32");
    }
    if (entry.fileSystemType == u"exfat") {
        return QStringLiteral("exFAT");
    }
    if (entry.fileSystemType.startsWith(u"ntfs") || entry.fileSystemType == u"fuseblk") {
        return QStringLiteral("NTFS");
    }
    if (entry.fileSystemType == u"iso9660") {
        return QStringLiteral("CDFS");
    }
    if (entry.fileSystemType == u"udf") {
        return QStringLiteral("UDF");
    }
    return entry.fileSystemType;
}

} // namespace

QList<MountEntry> parseMountInfo(const QByteArray& text) {
    QList<MountEntry> entries;
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-");
        if (fields.size() < 6 || dash < 6 || dash + 2 >= fields.size()) {
            continue;
        }
        MountEntry entry;
        entry.mountPoint = unescaped(fields[4]);
        entry.readOnly = fields[5].split(',').contains("ro");
        entry.fileSystemType = unescaped(fields[dash + 1]);
        entry.source = unescaped(fields[dash + 2]);
        entries << entry;
    }
    return entries;
}

QList<MountEntry> LinuxDriveQueries::drives() {
    QFile file(paths_.mountInfo);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QList<MountEntry> drives;
    for (const MountEntry& entry : parseMountInfo(file.readAll())) {
        const bool drive =
            entry.mountPoint == u"/" || entry.source.startsWith(u"/dev/") ||
            isRemote(entry.fileSystemType) ||
            (isRam(entry.fileSystemType) && !entry.mountPoint.startsWith(u"/dev") &&
             !entry.mountPoint.startsWith(u"/run") && !entry.mountPoint.startsWith(u"/sys") &&
             !entry.mountPoint.startsWith(u"/proc"));
        if (!drive) {
            continue;
        }
        // A later mount on the same point hides the earlier one.
        drives.removeIf([&](const MountEntry& e) { return e.mountPoint == entry.mountPoint; });
        drives << entry;
    }
    return drives;
}

QStringList LinuxDriveQueries::roots() {
    QStringList roots;
    for (const MountEntry& entry : drives()) {
        roots << withSeparator(entry.mountPoint);
    }
    return roots;
}

std::optional<MountEntry> LinuxDriveQueries::volumeOf(const QString& root) {
    const QFileInfo info(root);
    if (!info.exists() || !info.isDir()) {
        return std::nullopt;
    }
    const QString path = withSeparator(info.canonicalFilePath());
    std::optional<MountEntry> best;
    QFile file(paths_.mountInfo);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    for (const MountEntry& entry : parseMountInfo(file.readAll())) {
        const QString point = withSeparator(entry.mountPoint);
        if (path.startsWith(point) &&
            (!best || point.size() >= withSeparator(best->mountPoint).size())) {
            best = entry;
        }
    }
    return best;
}

bool LinuxDriveQueries::removable(const QString& device) {
    const QString name = QFileInfo(device).canonicalFilePath().section(u'/', -1);
    if (name.isEmpty()) {
        return false;
    }
    // SD slots wired to the board show as mmcblk and say they are fixed; the card is not.
    if (name.startsWith(u"mmcblk")) {
        return true;
    }
    const QString node = QFileInfo(paths_.sysBlock + u'/' + name).canonicalFilePath();
    for (const QString& dir : {node, QFileInfo(node).path()}) {
        QFile flag(dir + QStringLiteral("/removable"));
        if (flag.open(QIODevice::ReadOnly)) {
            return flag.readAll().trimmed() == "1";
        }
    }
    return false;
}

std::int32_t LinuxDriveQueries::driveType(const QString& root) {
    const std::optional<MountEntry> volume = volumeOf(root);
    if (!volume) {
        return driveNoRootDir;
    }
    const QString& type = volume->fileSystemType;
    if (isRemote(type)) {
        return driveRemote;
    }
    if (isRam(type)) {
        return driveRamDisk;
    }
    if (type == u"iso9660" || type == u"udf" || volume->source.startsWith(u"/dev/sr")) {
        return driveCdrom;
    }
    if (volume->source.startsWith(u"/dev/")) {
        return removable(volume->source) ? driveRemovable : driveFixed;
    }
    return driveFixed;
}

bool LinuxDriveQueries::diskFreeSpaceEx(const QString& root, DiskSpace& out) {
    struct statvfs fs {};
    if (statvfs(QFile::encodeName(root).constData(), &fs) != 0) {
        return false;
    }
    out.total = static_cast<std::uint64_t>(fs.f_blocks) * fs.f_frsize;
    out.free = static_cast<std::uint64_t>(fs.f_bfree) * fs.f_frsize;
    out.available = static_cast<std::uint64_t>(fs.f_bavail) * fs.f_frsize;
    return true;
}

bool LinuxDriveQueries::diskFreeSpace(const QString& root, std::uint32_t& sectorsPerCluster,
                                      std::uint32_t& bytesPerSector, std::uint32_t& freeClusters,
                                      std::uint32_t& totalClusters) {
    struct statvfs fs {};
    if (statvfs(QFile::encodeName(root).constData(), &fs) != 0) {
        return false;
    }
    sectorsPerCluster = 1;
    bytesPerSector = static_cast<std::uint32_t>(fs.f_frsize);
    freeClusters = static_cast<std::uint32_t>(fs.f_bfree);
    totalClusters = static_cast<std::uint32_t>(fs.f_blocks);
    return true;
}

QString LinuxDriveQueries::udevName(const QString& directory, const QString& device) {
    const QString target = QFileInfo(device).canonicalFilePath();
    const QDir dir(directory);
    for (const QFileInfo& link : dir.entryInfoList(QDir::System | QDir::Files)) {
        if (!target.isEmpty() && link.canonicalFilePath() == target) {
            return unescaped(link.fileName().toUtf8().replace("\\x", "\\0"));
        }
    }
    return {};
}

bool LinuxDriveQueries::volumeInformation(const QString& root, VolumeInformation& out) {
    const std::optional<MountEntry> volume = volumeOf(root);
    struct statvfs fs {};
    if (!volume || statvfs(QFile::encodeName(root).constData(), &fs) != 0) {
        return false;
    }
    out.fileSystemName = systemName(*volume, static_cast<quint64>(fs.f_blocks) * fs.f_frsize);
    const bool fat = isFat(volume->fileSystemType);
    // Long names on FAT hold 255 characters, whatever the kernel allows for their bytes.
    out.maxComponentLength = fat ? 255U : static_cast<std::uint32_t>(fs.f_namemax);
    // Case is kept by every file system here, and told apart by all but FAT's.
    out.fileSystemFlags = 0x2 | 0x4 | (fat ? 0x0 : 0x1) | (volume->readOnly ? 0x80000 : 0x0);
    if (fat) {
        if (const std::optional<FatVolume> boot = readFatBootSector(volume->source)) {
            out.label = boot->label;
            out.serialNumber = boot->serialNumber;
            return true;
        }
    }
    out.label = udevName(paths_.disksByLabel, volume->source);
    const QString uuid = udevName(paths_.disksByUuid, volume->source).remove(u'-');
    // FAT's "XXXX-XXXX" is its serial; NTFS's sixteen digits end in the serial Windows shows.
    if (uuid.size() == 8 || uuid.size() == 16) {
        out.serialNumber = uuid.right(8).toUInt(nullptr, 16);
    }
    return true;
}

bool LinuxDriveQueries::setVolumeLabel(const QString& root, const QString& label, QString& error) {
    const std::optional<MountEntry> volume = volumeOf(root);
    if (!volume || !isFat(volume->fileSystemType)) {
        error = QStringLiteral("Only the label of a FAT card can be set here.");
        return false;
    }
    if (!QFileInfo(volume->source).isWritable()) {
        error = QStringLiteral("You may not write to %1; ask for write access to the card's "
                               "device, or set the label on a computer where you may.")
                    .arg(volume->source);
        return false;
    }
    QProcess fatlabel;
    fatlabel.start(QStringLiteral("fatlabel"),
                   label.isEmpty() ? QStringList{QStringLiteral("-r"), volume->source}
                                   : QStringList{volume->source, label});
    if (!fatlabel.waitForFinished(10000) || fatlabel.exitStatus() != QProcess::NormalExit ||
        fatlabel.exitCode() != 0) {
        error = QStringLiteral("fatlabel could not set the label: %1")
                    .arg(QString::fromLocal8Bit(fatlabel.readAllStandardError()).trimmed());
        return false;
    }
    return true;
}

TimeZoneInformation LinuxDriveQueries::timeZoneInformation() {
    const QTimeZone zone = QTimeZone::systemTimeZone();
    TimeZoneInformation info;
    info.standardName = QString::fromLatin1(QTimeZone::ianaIdToWindowsId(zone.id()));
    // A zone without daylight saving, or one the zone database cannot name as Windows does,
    // is the unknown case.
    if (info.standardName.isEmpty() || !zone.hasDaylightTime()) {
        info.state = timeZoneUnknown;
        return info;
    }
    info.state =
        zone.isDaylightTime(QDateTime::currentDateTime()) ? timeZoneDaylight : timeZoneStandard;
    return info;
}

} // namespace stellwyn::sdmemory
