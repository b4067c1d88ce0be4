#include "InstanceLock.h"

namespace stellwyn::core {

InstanceLock::InstanceLock(const QString& lockPath) : lock_(lockPath) {
    // Never treat a live owner's lock as stale, however long it has been running.
    lock_.setStaleLockTime(0);
}

bool InstanceLock::tryAcquire() {
    return lock_.tryLock(0);
}

} // namespace stellwyn::core
