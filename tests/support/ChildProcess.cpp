#include "ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

namespace stellwyn::testsupport {

ChildRun runInChild(const std::function<int(int fd)>& body) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) {
        return {};
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        ::_exit(body(pipeEnds[1]));
    }
    ::close(pipeEnds[1]);
    ChildRun run;
    char buffer[512];
    for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
        run.told.append(buffer, n);
    }
    ::close(pipeEnds[0]);
    int status = 0;
    if (child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status)) {
        run.exited = true;
        run.status = WEXITSTATUS(status);
    }
    return run;
}

bool writeAll(int fd, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n =
            ::write(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (n <= 0) {
            return false;
        }
        done += n;
    }
    return true;
}

} // namespace stellwyn::testsupport
