#pragma once

#include <QLockFile>
#include <QString>

namespace stellwyn::core {

// One running program per application home. The lock file holds the owner's process id, so a
// lock left by a crashed run is recognised as stale and taken over.
class InstanceLock {
public:
    explicit InstanceLock(const QString& lockPath);
    // False when another live process holds the lock. A lock file that cannot be made (a
    // read-only or full folder) is a FatalError that names the folder: no other instance was
    // found, and the program must not say there was.
    bool tryAcquire();

private:
    QLockFile lock_;
    QString path_;
};

} // namespace stellwyn::core
