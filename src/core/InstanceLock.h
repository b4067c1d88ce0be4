#pragma once

#include <QLockFile>
#include <QString>

namespace stellwyn::core {

// One running program per application home. The lock file holds the owner's process id, so a
// lock left by a crashed run is recognised as stale and taken over.
class InstanceLock {
public:
    explicit InstanceLock(const QString& lockPath);
    // False when another live process holds the lock.
    bool tryAcquire();

private:
    QLockFile lock_;
};

} // namespace stellwyn::core
