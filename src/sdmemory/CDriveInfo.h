#pragma once

#include "DriveQueries.h"

#include <QString>
#include <cstdint>

namespace stellwyn::sdmemory {

// A size in bytes. Byte counts come from the system as 64-bit numbers and every sum and
// comparison is done on them whole, so a card or disk of any size is told exactly.
using ByteCount = std::uint64_t;

// Answers about one drive: kind, file system, label and serial, sizes. Volume data and sizes
// are read at Refresh and kept; the drive type is asked anew each time.
class CDriveInfo {
public:
    explicit CDriveInfo(DriveQueries& queries);

    // Normalises d to a root ("e:" and "e: [CARD]" become "E:" first; a missing trailing
    // separator is added) and reads the drive.
    void setDrive(const QString& d);
    QString Drive() const { return root_; }
    // True when the system took the label; the volume is then read again. labelError() says
    // why it did not.
    bool setLabel(const QString& text);
    QString Label() const { return label_; }
    QString labelError() const { return labelError_; }

    ByteCount AvailableSpace() const { return availableSpace_; }
    std::int32_t DriveType() const;
    QString DriveTypeEx() const;
    QString FileSystem() const { return fileSystem_; }
    bool FileSystemFlag(std::int32_t flag) const;
    std::int32_t FileSystemFlags() const { return fileSystemFlags_; }
    ByteCount FreeSpace() const { return freeSpace_; }
    std::int32_t MaxFilenameLength() const { return maxComponentLength_; }
    bool Present() const { return present_; }
    QString SerialNumber() const { return QString::number(serialNumber_); }
    QString SerialNumberEx() const;
    ByteCount TotalSpace() const { return totalSpace_; }

    static QString FormatSize(ByteCount size, bool withBytes);
    static QString driveTypeText(std::int32_t type);

    void Refresh();

private:
    void readSizes();
    void readVolume();

    DriveQueries& queries_;
    QString root_;
    bool hasDiskFreeEx_ = false;
    bool present_ = false;
    ByteCount availableSpace_ = 0;
    ByteCount freeSpace_ = 0;
    ByteCount totalSpace_ = 0;
    QString label_;
    QString labelError_;
    QString fileSystem_;
    // The system's serial is unsigned; it is kept, and shown, as the signed number.
    std::int32_t serialNumber_ = 0;
    std::int32_t maxComponentLength_ = 0;
    std::int32_t fileSystemFlags_ = 0;
};

} // namespace stellwyn::sdmemory
