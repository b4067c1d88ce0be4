// The readings store and the collection grid: how long a durable store of one reading takes
// (each one waits for the disk), and how the grid's model fares over a million rows: opening,
// each sort order, and a jump to the last row, with the process's resident memory around it;
// then the export of the whole table to CSV and XLSX, in rows per second.
//
//   collection [--stores N] [--rows N] [--dir DIR]
//
// DIR should be on the disk the program's data will live on (the default is a temporary folder).
#include "collection/DataColModel.h"
#include "collection/ReadingExport.h"
#include "collection/StoreReading.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace stellwyn;

namespace {

double residentMiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:")) {
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
        }
    }
    return 0;
}

void figure(const char* what, double value, const char* unit, double target) {
    std::printf("%-44s %10.2f %-3s (target <= %.0f %s)%s\n", what, value, unit, target, unit,
                value <= target ? "" : "  MISSED");
}

int option(const QStringList& args, const QString& name, int fallback) {
    const qsizetype at = args.indexOf(name);
    return at >= 0 && at + 1 < args.size() ? args.at(at + 1).toInt() : fallback;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int stores = option(args, QStringLiteral("--stores"), 10000);
    const int rows = option(args, QStringLiteral("--rows"), 1000000);
    QTemporaryDir temp;
    const qsizetype dirAt = args.indexOf(QStringLiteral("--dir"));
    const QString dir = dirAt >= 0 && dirAt + 1 < args.size() ? args.at(dirAt + 1) : temp.path();

    core::createDatabase(dir);
    core::Module1 m;
    m.dataconn = core::connectionText(dir);
    {
        core::Connection c = core::Connection::open(m.dataconn);
        core::prepareReadingStore(c);
    }
    core::RealClock clock;

    // One reading at a time, as the scanners keep them.
    std::vector<double> latencies;
    latencies.reserve(static_cast<std::size_t>(stores));
    QElapsedTimer timer;
    for (int i = 0; i < stores; ++i) {
        timer.start();
        collection::store_reading(m, clock, QString::number(130 + i % 10),
                                  QStringLiteral("%1").arg(i % 1000, 6));
        latencies.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(latencies.begin(), latencies.end());
    std::printf("%d durable stores\n", stores);
    figure("store, median", latencies[latencies.size() / 2], "ms", 5);
    figure("store, p99", latencies[latencies.size() * 99 / 100], "ms", 5);

    // Fill to the grid's size in one transaction; this is setup, not a figure.
    {
        core::Connection c = core::Connection::open(m.dataconn);
        core::Transaction t(c);
        QRandomGenerator random(3);
        const QDateTime start(QDate(2026, 1, 1), QTime(0, 0));
        for (int i = stores; i < rows; ++i) {
            core::insertReading(c, QString::number(130 + random.bounded(10)),
                                QString::number(random.bounded(100000)),
                                start.addSecs(random.bounded(365 * 86400)));
        }
        t.commit();
    }
    std::printf("\ngrid over %d rows\n", rows);
    const double before = residentMiB();
    collection::DataColModel model;
    auto step = [&](const char* what, const auto& work) {
        timer.start();
        work();
        figure(what, static_cast<double>(timer.nsecsElapsed()) / 1e6, "ms", 300);
    };
    // Each step shows what a grid shows: the rows of its first screen.
    auto firstScreen = [&] {
        for (int r = 0; r < 40 && r < model.rowCount(); ++r) {
            (void)model.rowAt(r);
        }
    };
    step("open (count and first screen)", [&] {
        model.bind(m.dataconn, core::DataColOrder::storeOrder);
        firstScreen();
    });
    const std::pair<const char*, core::DataColOrder> orders[] = {
        {"sort by ID", core::DataColOrder::byId},
        {"sort by date and time", core::DataColOrder::byDateTime},
        {"sort by scale", core::DataColOrder::byScaleId},
        {"sort by reading", core::DataColOrder::byReading}};
    for (const auto& [what, order] : orders) {
        step(what, [&, order = order] {
            model.refresh(order);
            firstScreen();
        });
        step("  then jump to the last row", [&] { (void)model.rowAt(model.rowCount() - 1); });
        step("  then jump to the middle", [&] { (void)model.rowAt(model.rowCount() / 2); });
    }
    // Scroll the whole table page by page, as an operator holding the key down would.
    timer.start();
    for (int r = 0; r < model.rowCount(); r += collection::DataColModel::pageSize) {
        (void)model.rowAt(r);
    }
    std::printf("%-44s %10.2f ms\n", "scroll through every row",
                static_cast<double>(timer.nsecsElapsed()) / 1e6);
    const double after = residentMiB();
    std::printf("\nresident memory: %.1f MiB before the grid, %.1f MiB after\n", before, after);
    figure("memory growth", after - before, "MiB", 50);

    // Export of the whole table, in the order the grid sorts by most: a file written row by row
    // as the store hands the rows over.
    std::printf("\nexport of %d rows by date and time\n", rows);
    for (const char* suffix : {"csv", "xlsx"}) {
        if (QString::fromLatin1(suffix) == u"xlsx" && !collection::xlsxExportAvailable()) {
            continue;
        }
        const QString file = dir + QStringLiteral("/export.") + QString::fromLatin1(suffix);
        const double startMiB = residentMiB();
        core::Connection c = core::Connection::open(m.dataconn);
        timer.start();
        const qint64 written = collection::exportReadings(c, core::DataColOrder::byDateTime, file);
        const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        std::printf("%-44s %10.0f rows/s (%lld rows, %.1f MiB file)\n",
                    qPrintable(QStringLiteral("%1 export").arg(QString::fromLatin1(suffix))),
                    static_cast<double>(written) / seconds, static_cast<long long>(written),
                    static_cast<double>(QFile(file).size()) / (1024.0 * 1024.0));
        figure("  whole table", seconds, "s", 10);
        figure("  memory growth", residentMiB() - startMiB, "MiB", 50);
        QFile::remove(file);
    }
    return 0;
}
