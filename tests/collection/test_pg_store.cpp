// Readings kept on a PostgreSQL server, against a throwaway cluster: each row with its station,
// stations kept apart, the outbox across a server that stops and comes back, the password as
// libpq finds it, and the grid's orders as SQLite gives them.
#include "PgCluster.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "collection/CollectionGrid.h"
#include "collection/DataColModel.h"
#include "collection/StoreReading.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"
#include "core/store/Outbox.h"
#include "core/store/ReadingServer.h"
#include "display/StatusLine.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <mutex>
#include <thread>

using namespace stellwyn;
using core::DataColOrder;

Q_DECLARE_METATYPE(DataColOrder)

namespace {

// One station: its own home and data file, its readings going to `url` under `name`.
struct Station {
    Station(const QString& url, const QString& name) {
        core::createDatabase(home.path());
        m.dataconn = core::connectionText(home.path());
        m.readingsconn = core::readingsConnectionText(m.dataconn, {url, name});
    }
    void store(const std::optional<QString>& reading) {
        collection::store_reading(m, clock, QStringLiteral("130"), reading);
        clock.advance(1);
    }
    qint64 waiting() {
        core::Connection local = core::Connection::open(m.dataconn);
        return core::countWaiting(local);
    }
    QString status() { return display::statusLine({}, m.readingsconn, clock); }
    // The server's rows of this station (of all, when asked), in the order they came.
    QStringList onServer(bool allStations = false) {
        core::Connection server = core::Connection::open(m.readingsconn);
        server.setAllStations(allStations);
        QStringList rows;
        for (const core::DataColRow& row : core::readings(server, DataColOrder::byId)) {
            rows << (row.reading.isNull() ? QStringLiteral("<null>") : row.reading.toString());
        }
        return rows;
    }

    testsupport::TempHome home;
    core::VirtualClock clock{QDateTime(QDate(2026, 5, 4), QTime(9, 30))};
    core::Module1 m;
};

QStringList numbered(int from, int to) {
    QStringList texts;
    for (int i = from; i < to; ++i) {
        texts << QString::number(i);
    }
    return texts;
}

QStringList shown(const QList<core::DataColRow>& rows) {
    QStringList lines;
    for (const core::DataColRow& row : rows) {
        lines << QStringLiteral("%1|%2|%3|%4|%5")
                     .arg(QString::number(row.id), row.scaleId,
                          row.reading.isNull() ? QStringLiteral("<null>") : row.reading.toString(),
                          row.date, row.time);
    }
    return lines;
}

} // namespace

class TestPgStore : public QObject {
    Q_OBJECT

    testsupport::PgCluster cluster;
    int databases = 0;

    // A database for each case, so that what one leaves (rows, a server marked away) cannot
    // help or hinder another. The cluster runs again should a case have failed with it stopped.
    QString freshDatabase(const QString& user = QStringLiteral("postgres")) {
        const QString name = QStringLiteral("t%1").arg(++databases);
        if (!cluster.start() ||
            !cluster.exec(QStringLiteral("create database %1 owner %2").arg(name, user))) {
            qFatal("%s", qPrintable(cluster.error()));
        }
        return cluster.url(user, name);
    }

private slots:
    void initTestCase() {
        QVERIFY2(cluster.start(), qPrintable(cluster.error()));
        QVERIFY2(cluster.exec(QStringLiteral("create role %1 login password 'right'")
                                  .arg(QLatin1String(testsupport::PgCluster::passwordRole))),
                 qPrintable(cluster.error()));
    }

    void stationsKeepTheirOwnRows() {
        const QString url = freshDatabase();
        Station north(url, QStringLiteral("north"));
        Station south(url, QStringLiteral("south"));
        // Both make the tables at once in the empty database: the one that waits on the other
        // must find them made, not fail making them again.
        QStringList problems;
        std::mutex mutex;
        std::vector<std::jthread> starts;
        for (Station* station : {&north, &south}) {
            starts.emplace_back([&, station] {
                try {
                    core::Connection::openServer(core::serverOf(station->m.readingsconn));
                } catch (const core::ServerError& error) {
                    const std::lock_guard lock(mutex);
                    problems << error.text();
                }
            });
        }
        starts.clear();
        QCOMPARE(problems, QStringList());
        for (int i = 0; i < 3; ++i) {
            north.store(QStringLiteral("n%1").arg(i));
            south.store(QStringLiteral("s%1").arg(i));
        }
        QCOMPARE(north.waiting(), 0);
        QCOMPARE(north.onServer(), QStringList({"n0", "n1", "n2"}));
        QCOMPARE(south.onServer(), QStringList({"s0", "s1", "s2"}));
        QCOMPARE(north.onServer(true), QStringList({"n0", "s0", "n1", "s1", "n2", "s2"}));
        QVERIFY2(north.status().endsWith(QStringLiteral("; 3 readings stored today")),
                 qPrintable(north.status()));

        // The grid: the station's rows, every station's on the tick; "Clear List" clears this
        // station's rows, whatever the grid shows.
        core::Form1Controls f;
        testsupport::RecordingDialogs dialogs;
        collection::CollectionGrid grid(f, dialogs);
        collection::DataColModel model;
        f.data2.ConnectionString = north.m.readingsconn;
        f.data2.Refreshed = [&] { model.refresh(grid.order(), grid.allStations()); };
        f.chk_allstations.visible = true;
        grid.attach();
        model.bind(f.data2.ConnectionString, grid.order());
        QCOMPARE(model.rowCount(), 3);
        f.chk_allstations.setValue(1);
        QCOMPARE(model.rowCount(), 6);
        QCOMPARE(f.Label20.caption, QStringLiteral("Data Collection - 6 Readings"));
        dialogs.answers = {true};
        grid.Command2_Click();
        QCOMPARE(f.Label20.caption, QStringLiteral("Data Collection - 3 Readings"));
        QCOMPARE(model.rowAt(0).scaleId + model.rowAt(0).reading.toString(),
                 QStringLiteral("130s0"));
        QCOMPARE(north.onServer(true), QStringList({"s0", "s1", "s2"}));
    }

    void outboxCarriesReadingsAcrossAStoppedServer() {
        const QString url = freshDatabase();
        Station station(url, QStringLiteral("east"));
        for (const QString& text : numbered(0, 5)) {
            station.store(text);
        }
        cluster.stop();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                               "Readings server .*cannot be reached")));
        // A batch goes as one array per field: nothing in a text may break out of it.
        const QStringList awkward = {
            QStringLiteral("\"6\""), QStringLiteral("7\\"), QStringLiteral("{8,9}"),
            QStringLiteral("NULL"),  QString(""),           QStringLiteral("  12.5 kg ü")};
        for (const QString& text : awkward) {
            station.store(text);
        }
        station.store(std::nullopt);
        QCOMPARE(station.waiting(), 7);
        // libpq's lines on one, kept apart, and a single stop before the station's own words.
        const QString away = station.status();
        QVERIFY2(away.contains(QStringLiteral("; 7 readings waiting; Readings server ") + url +
                               QStringLiteral(" cannot be reached: ")) &&
                     away.contains(QRegularExpression(
                         QStringLiteral("reached: [^;]+; .*[^.?!][.?!] Readings wait on this "))),
                 qPrintable(away));

        // A station that died after the server took a batch and before its outbox gave it up
        // sends that batch again at its next start: here, from a copy of its file taken before.
        const QString file = core::dataSourceOf(station.m.dataconn);
        const QString copy = station.home.file(QStringLiteral("before.mdb"));
        for (const QString& part : {QString(), QStringLiteral("-wal")}) {
            QVERIFY(QFile::copy(file + part, copy + part));
        }
        QVERIFY2(cluster.start(), qPrintable(cluster.error()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("answers again")));
        QCOMPARE(collection::sendWaitingReadings(station.m), 0);
        core::Connection before = core::Connection::open(copy);
        QCOMPARE(core::countWaiting(before), 7);
        QCOMPARE(core::OutboxSender(core::serverOf(station.m.readingsconn)).send(before, true), 0);

        QCOMPARE(station.onServer(), numbered(0, 5) + awkward + QStringList{"<null>"});
        QVERIFY2(!station.status().contains(QStringLiteral("waiting")),
                 qPrintable(station.status()));
    }

    void passwordComesFromLibpqAlone_data() {
        QTest::addColumn<QByteArray>("pgpassword");
        QTest::addColumn<QByteArray>("passfile");
        QTest::addColumn<QString>("userPart");
        QTest::addColumn<QString>("problem"); // empty: the readings reach the server

        QTest::newRow("PGPASSWORD") << QByteArray("right") << QByteArray() << "pwuser@"
                                    << "";
        QTest::newRow(".pgpass") << QByteArray() << QByteArray("*:*:*:pwuser:right\n") << "pwuser@"
                                 << "";
        QTest::newRow("wrong password") << QByteArray("wrong") << QByteArray() << "pwuser@"
                                        << "password authentication failed for user \"pwuser\"";
        QTest::newRow("no password") << QByteArray() << QByteArray() << "pwuser@"
                                     << "fe_sendauth: no password supplied";
        QTest::newRow("password in the url")
            << QByteArray("right") << QByteArray() << "pwuser:right@"
            << "holds a password; it belongs in ~/.pgpass or PGPASSWORD";
    }
    void passwordComesFromLibpqAlone() {
        QFETCH(QByteArray, pgpassword);
        QFETCH(QByteArray, passfile);
        QFETCH(QString, userPart);
        QFETCH(QString, problem);
        const QString url = freshDatabase(QLatin1String(testsupport::PgCluster::passwordRole));
        Station station(QString(url).replace(QStringLiteral("pwuser@"), userPart),
                        QStringLiteral("west"));
        station.home.write(QStringLiteral("pgpass"), passfile);
        QFile(station.home.file(QStringLiteral("pgpass")))
            .setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        qputenv("PGPASSFILE", station.home.file(QStringLiteral("pgpass")).toLocal8Bit());
        qputenv("PGPASSWORD", pgpassword);
        if (!problem.isEmpty()) {
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QRegularExpression::escape(problem)));
        }
        for (const QString& text : numbered(0, 3)) {
            station.store(text);
        }
        const QString status = station.status();
        qunsetenv("PGPASSFILE");
        qputenv("PGPASSWORD", "right");
        if (problem.isEmpty()) {
            QCOMPARE(station.waiting(), 0);
            QCOMPARE(station.onServer(), numbered(0, 3));
        } else {
            // Collected on, locally; one line names the server (never a password) and the fault.
            QCOMPARE(station.waiting(), 3);
            QVERIFY2(status.contains(QStringLiteral("; 3 readings waiting; Readings server ") +
                                     url + QStringLiteral(" cannot be reached: ")) &&
                         status.contains(problem),
                     qPrintable(status));
        }
        qunsetenv("PGPASSWORD");
    }

    void ordersAsOnSqlite_data() {
        QTest::addColumn<DataColOrder>("order");
        QTest::newRow("store order") << DataColOrder::storeOrder;
        QTest::newRow("ID") << DataColOrder::byId;
        QTest::newRow("Dat/Time") << DataColOrder::byDateTime;
        QTest::newRow("Scale ID") << DataColOrder::byScaleId;
        QTest::newRow("Weight") << DataColOrder::byReading;
    }
    void ordersAsOnSqlite() {
        QFETCH(DataColOrder, order);
        testsupport::TempHome home;
        core::createDatabase(home.path());
        core::Connection file = core::Connection::open(core::connectionText(home.path()));
        const QString url = freshDatabase();
        core::Connection server = core::Connection::openServer({url, QStringLiteral("mill")});
        core::Connection other = core::Connection::openServer({url, QStringLiteral("other")});
        // Texts that sort differently by value, by case, by collation; nulls; shared moments.
        const char* const scales[] = {"b", "A", "a", "B", "130", "Wägebrücke", "Waage", "", "a"};
        const char* const values[] = {"20", "100", "9", nullptr, "", "-1.5", "100", "é", "E"};
        for (int i = 0; i < 27; ++i) {
            const char* value = values[(i * 4) % 9];
            const auto reading = value ? std::optional(QString::fromUtf8(value)) : std::nullopt;
            const QDateTime at =
                QDateTime(QDate(2026, 1, 31), QTime(23, 59, 58)).addSecs((i / 3) % 4);
            core::insertReading(file, QString::fromUtf8(scales[i % 9]), reading, at);
            core::insertReading(server, QString::fromUtf8(scales[i % 9]), reading, at);
            core::insertReading(other, QStringLiteral("zz"), reading, at);
        }
        // The server's IDs run on over the other station's rows: its row n has ID 2n - 1.
        QList<core::DataColRow> onServer = core::readings(server, order);
        for (core::DataColRow& row : onServer) {
            row.id = (row.id + 1) / 2;
        }
        QCOMPARE(shown(onServer), shown(core::readings(file, order)));

        // The grid pages on from a key through the server's index, both ways, as far as a key
        // without a null takes it.
        const QList<core::DataColRow> whole = core::readings(server, order);
        for (bool after : {true, false}) {
            QList<core::DataColRow> paged = core::readingsAt(server, order, 0, 4, !after);
            while (const auto next = core::readingsBeside(
                       server, order, after ? paged.last() : paged.first(), 4, after)) {
                if (next->isEmpty()) {
                    break;
                }
                paged = after ? paged + *next : *next + paged;
            }
            QVERIFY(paged.size() > 4);
            QCOMPARE(shown(paged), shown(after ? whole.mid(0, paged.size())
                                               : whole.mid(whole.size() - paged.size())));
        }
    }
};

QTEST_GUILESS_MAIN(TestPgStore)
#include "test_pg_store.moc"
