#pragma once

#include <QByteArray>
#include <functional>

namespace stellwyn::testsupport {

// What a forked child handed back: the bytes it wrote to its pipe, and how it ended.
struct ChildRun {
    QByteArray told;
    bool exited = false; // ended by _exit or exit, not by a signal
    int status = -1;     // its exit status when it exited
};

// Runs `body` in a forked child, for steps that end the process or change what the process may
// do (its user, its limits). The child writes what it wants seen to the descriptor it is given;
// when `body` returns, the child ends with that value as its exit status.
ChildRun runInChild(const std::function<int(int fd)>& body);

// Writes all of `bytes` to `fd`; false when it could not.
bool writeAll(int fd, const QByteArray& bytes);

} // namespace stellwyn::testsupport
