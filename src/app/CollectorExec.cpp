#include "CollectorExec.h"

#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace stellwyn::app {

int execCollector(const QStringList& arguments) {
    // Beside the running program, wherever it was installed or built; not a search of PATH,
    // which could find another version's collector.
    const QString folder = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
    const QByteArray program = (folder + QStringLiteral("/stellwyn-collector")).toLocal8Bit();

    std::vector<QByteArray> owned;
    owned.reserve(static_cast<std::size_t>(arguments.size()) + 1);
    owned.push_back(QByteArray("stellwyn-collector"));
    for (const QString& argument : arguments) {
        owned.push_back(argument.toLocal8Bit());
    }
    std::vector<char*> argv;
    for (QByteArray& argument : owned) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    ::execv(program.constData(), argv.data());
    std::fprintf(stderr, "stellwyn: cannot start %s: %s\n", program.constData(),
                 std::strerror(errno));
    return 1;
}

} // namespace stellwyn::app
