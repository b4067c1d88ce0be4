// The SD card's log import: a KL.Dat of a million lines, written by stellwyn-sim, read through
// the import the Setup screen runs into a new svdata.mdb. Prints lines per second, the total
// time and the process's memory before, after and at its peak during the import: the import
// keeps no more than one line at a time and SQLite's cache and sorter are bounded, so the growth
// should stay the same whatever the file's length (compare --lines 250000 with the million).
//
//   sd_import [--lines N] [--dir DIR] [--no-indexes]
//
// --no-indexes imports into a file that has never had the collection grid open, so without the
// indexes of the grid's orders. With them, the import leaves them out while its rows go in and
// has them built again on a thread of their own once the rows are committed: the grid shows the
// rows at once, and its sorted orders are quick again when the indexes stand, which is printed
// apart. The peak memory is taken over both.
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"
#include "core/store/OrderIndexes.h"
#include "sdmemory/KlDatImport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <cstdio>
#include <ctime>

using namespace stellwyn;

namespace {

double statusMiB(const char* key) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(key)) {
            return line.mid(qstrlen(key)).trimmed().split(' ').first().toDouble() / 1024.0;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const qsizetype linesAt = args.indexOf(QStringLiteral("--lines"));
    const int lines =
        linesAt >= 0 && linesAt + 1 < args.size() ? args.at(linesAt + 1).toInt() : 1000000;
    QTemporaryDir temp;
    const qsizetype dirAt = args.indexOf(QStringLiteral("--dir"));
    const QString dir = dirAt >= 0 && dirAt + 1 < args.size() ? args.at(dirAt + 1) : temp.path();

    const QString kl = dir + QStringLiteral("/KL.Dat");
    QProcess sim;
    sim.start(
        QCoreApplication::applicationDirPath() + QStringLiteral("/stellwyn-sim"),
        {QStringLiteral("--write-kl"), kl, QStringLiteral("--lines"), QString::number(lines)});
    if (!sim.waitForFinished(600000) || sim.exitCode() != 0) {
        std::fprintf(stderr, "stellwyn-sim could not write %s: %s\n", qPrintable(kl),
                     sim.readAllStandardError().constData());
        return 1;
    }

    core::createDatabase(dir);
    if (!args.contains(QStringLiteral("--no-indexes"))) {
        // The file as the program leaves it once the collection grid has been open: with the
        // indexes of the grid's orders, which every stored row also goes into.
        core::Connection connection = core::Connection::open(dir + QStringLiteral("/svdata.mdb"));
        core::prepareReadingStore(connection);
    }
    core::Module1 m;
    m.cfgconn = core::connectionText(dir);
    m.dataconn = m.cfgconn;
    m.sdtimezone = QStringLiteral("Pacific Standard Time");

    // Start the peak afresh, so that it tells the import's own growth.
    {
        QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
        if (clearRefs.open(QIODevice::WriteOnly)) {
            clearRefs.write("5");
        }
    }
    const double before = statusMiB("VmRSS:");
    QElapsedTimer clock;
    clock.start();
    const std::clock_t cpuStart = std::clock();
    const sdmemory::KlImportResult result = sdmemory::importKlDat(kl, m);
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    const double cpuSeconds = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    if (!result.error.isEmpty()) {
        std::fprintf(stderr, "import stopped: %s\n", qPrintable(result.error));
        return 1;
    }
    std::printf("KL.Dat: %d lines asked, %lld bytes; %d rows stored, %d bad lines\n", lines,
                static_cast<long long>(QFileInfo(kl).size()), result.stored, result.badLines);
    std::printf("%-28s %12.0f lines/s\n", "import", result.stored / seconds);
    std::printf("%-28s %12.3f s   (target <= 2 s for 1,000,000 lines)%s\n", "total", seconds,
                lines >= 1000000 && seconds > 2.0 ? "  MISSED" : "");
    // On a machine shared with other work the wall time stretches; the processor time does not.
    std::printf("%-28s %12.3f s\n", "processor time", cpuSeconds);
    core::waitForOrderIndexes();
    const double indexed = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    const double indexedCpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    if (!args.contains(QStringLiteral("--no-indexes"))) {
        std::printf("%-28s %12.3f s   (%.3f s of processor, both threads)\n",
                    "sort indexes stand after", indexed, indexedCpu);
    }
    const double peak = statusMiB("VmHWM:");
    std::printf("%-28s %8.1f MiB before, %.1f MiB after, %.1f MiB peak\n", "resident memory",
                before, statusMiB("VmRSS:"), peak);
    std::printf("%-28s %12.1f MiB\n", "peak growth", peak - before);
    return 0;
}
