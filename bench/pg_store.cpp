// Readings kept on a PostgreSQL server with durable commits on both sides (the station's outbox
// and the server's synchronous_commit): stored readings per second from one station, and from
// ten stations at once, each its own process; then the time to drain an outbox of 100,000 rows.
// Starts its own throwaway cluster on a Unix socket.
//
//   pg_store [--stores N] [--outbox N]
#include "PgCluster.h"
#include "TempHome.h"
#include "collection/StoreReading.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/Outbox.h"
#include "core/store/ReadingServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <cstdio>
#include <memory>
#include <vector>

using namespace stellwyn;

namespace {

int option(const QStringList& args, const QString& name, int fallback) {
    const qsizetype at = args.indexOf(name);
    return at >= 0 && at + 1 < args.size() ? args.at(at + 1).toInt() : fallback;
}

QString text(const QStringList& args, const QString& name) {
    const qsizetype at = args.indexOf(name);
    return at >= 0 && at + 1 < args.size() ? args.at(at + 1) : QString();
}

// One station storing `count` readings the way the screen does; the outbox must be empty after.
int station(const QString& url, const QString& name, int count) {
    testsupport::TempHome home;
    core::createDatabase(home.path());
    core::Module1 m;
    m.dataconn = core::connectionText(home.path());
    m.readingsconn = core::readingsConnectionText(m.dataconn, {url, name});
    core::RealClock clock;
    for (int i = 0; i < count; ++i) {
        collection::store_reading(m, clock, QString::number(130 + i % 10),
                                  QString::number(i * 0.5, 'f', 1));
    }
    if (collection::sendWaitingReadings(m) != 0) {
        std::fprintf(stderr, "%s: readings left waiting\n", qPrintable(name));
        return 1;
    }
    return 0;
}

double storedPerSecond(const QString& self, const QString& url, int stations, int each) {
    std::vector<std::unique_ptr<QProcess>> children;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < stations; ++i) {
        auto child = std::make_unique<QProcess>();
        child->setProcessChannelMode(QProcess::ForwardedChannels);
        child->start(self, {QStringLiteral("--station"),
                            QStringLiteral("s%1-%2").arg(stations).arg(i), QStringLiteral("--url"),
                            url, QStringLiteral("--stores"), QString::number(each)});
        children.push_back(std::move(child));
    }
    for (auto& child : children) {
        if (!child->waitForFinished(-1) || child->exitCode() != 0) {
            return -1;
        }
    }
    return stations * each / (timer.nsecsElapsed() / 1e9);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int stores = option(args, QStringLiteral("--stores"), 2000);
    if (const QString name = text(args, QStringLiteral("--station")); !name.isEmpty()) {
        return station(text(args, QStringLiteral("--url")), name, stores);
    }
    const int outboxRows = option(args, QStringLiteral("--outbox"), 100000);

    testsupport::PgCluster cluster;
    if (!cluster.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(cluster.error()));
        return 1;
    }
    const QString url = cluster.url(QStringLiteral("postgres"));
    const QString self = QCoreApplication::applicationFilePath();
    // The schema is made once, before anything is timed.
    if (station(url, QStringLiteral("warm-up"), 1) != 0) {
        return 1;
    }

    const double one = storedPerSecond(self, url, 1, stores);
    std::printf("%-52s %10.0f readings/s\n", "one station, durable store to the server", one);
    const double ten = storedPerSecond(self, url, 10, stores / 2);
    std::printf("%-52s %10.0f readings/s\n", "ten stations at once (ten processes), in all", ten);

    testsupport::TempHome home;
    core::createDatabase(home.path());
    core::Connection local = core::Connection::open(core::connectionText(home.path()));
    core::prepareOutbox(local);
    {
        core::Transaction transaction(local);
        const QDateTime at = QDateTime::currentDateTime();
        for (int i = 0; i < outboxRows; ++i) {
            core::queueReading(local, QString::number(130 + i % 10), QString::number(i),
                               at.addSecs(i));
        }
        transaction.commit();
    }
    core::OutboxSender sender({url, QStringLiteral("drain")});
    QElapsedTimer timer;
    timer.start();
    const qint64 left = sender.send(local, true);
    const double seconds = timer.nsecsElapsed() / 1e9;
    std::printf("%-52s %10.2f s (%.0f rows/s)%s\n",
                qPrintable(QStringLiteral("drain an outbox of %1 rows").arg(outboxRows)), seconds,
                outboxRows / seconds, left == 0 ? "" : "  ROWS LEFT");
    return left == 0 && one > 0 && ten > 0 ? 0 : 1;
}
