#include "InstanceLock.h"

#include "FatalError.h"

#include <QDir>
#include <QFileInfo>

namespace stellwyn::core {

InstanceLock::InstanceLock(const QString& lockPath) : lock_(lockPath), path_(lockPath) {
    // Never treat a live owner's lock as stale, however long it has been running.
    lock_.setStaleLockTime(0);
}

bool InstanceLock::tryAcquire() {
    if (lock_.tryLock(0)) {
        return true;
    }
    if (lock_.error() == QLockFile::LockFailedError) {
        return false;
    }
    const QString folder = QDir::toNativeSeparators(QFileInfo(path_).absolutePath());
    throw FatalError(QStringLiteral("The lock file %1 cannot be made in the folder %2. Make the "
                                    "folder writable, or free space on its disk, and start the "
                                    "program again.")
                         .arg(QFileInfo(path_).fileName(), folder));
}

} // namespace stellwyn::core
