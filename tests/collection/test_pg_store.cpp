// Readings kept on a PostgreSQL server, against a throwaway cluster: each row with its station,
// stations kept apart, the outbox across a server that stops and comes back, a wrong password,
// and the grid's orders as SQLite gives them.
#include "PgCluster.h"
#include "TempHome.h"
#include "collection/StoreReading.h"
#include "core/Clock.h"
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

using namespace stellwyn;
using core::DataColOrder;

Q_DECLARE_METATYPE(DataColOrder)

namespace {

// One station: its own home and data file, its readings going to `url` under `name`.
struct Station {
    Station(const QString& url, const QString& name) {
        core::createDatabase(home.path());
        m.dataconn = core::connectionText(home.path());
        m.cfgconn = m.dataconn;
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
    // This station's rows as the server has them, in the order they came.
    QStringList onServer() {
        core::Connection server = core::Connection::open(m.readingsconn);
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

} // namespace

class TestPgStore : public QObject {
    Q_OBJECT

private:
    testsupport::PgCluster cluster;
    int databases = 0;

    // A database of its own for each case, so that what one leaves (a server marked away, rows)
    // cannot help or hinder another.
    QString freshDatabase(const QString& user = QStringLiteral("postgres")) {
        const QString name = QStringLiteral("t%1").arg(++databases);
        // Running again, should a case have failed with it stopped.
        if (!cluster.start() ||
            !cluster.exec(QStringLiteral("create database %1 owner %2").arg(name, user))) {
            qFatal("%s", qPrintable(cluster.error()));
        }
        return cluster.url(user, name);
    }

private slots:
    void initTestCase() {
        QVERIFY2(cluster.ok(), qPrintable(cluster.error()));
        QVERIFY2(cluster.start(), qPrintable(cluster.error()));
        QVERIFY2(cluster.exec(QStringLiteral("create role %1 login password 'right'")
                                  .arg(QLatin1String(testsupport::PgCluster::passwordRole))),
                 qPrintable(cluster.error()));
    }

    void stationsKeepTheirOwnRows() {
        const QString url = freshDatabase();
        Station north(url, QStringLiteral("north"));
        Station south(url, QStringLiteral("south"));
        for (int i = 0; i < 4; ++i) {
            north.store(QStringLiteral("n%1").arg(i));
            south.store(QStringLiteral("s%1").arg(i));
        }
        QCOMPARE(north.waiting(), 0);
        QCOMPARE(north.onServer(), QStringList({"n0", "n1", "n2", "n3"}));
        QCOMPARE(south.onServer(), QStringList({"s0", "s1", "s2", "s3"}));

        core::Connection all = core::Connection::open(north.m.readingsconn);
        all.setAllStations(true);
        QCOMPARE(core::countReadings(all), 8);
        QCOMPARE(core::countReadingsOn(all, north.clock.now().date()), 8);
        QSqlQuery stations = all.run(QStringLiteral(
            "select station, string_agg(reading, ',' order by id) from datacol group by station "
            "order by station"));
        QVERIFY(stations.next());
        QCOMPARE(stations.value(1).toString(), QStringLiteral("n0,n1,n2,n3"));
        QVERIFY(stations.next());
        QCOMPARE(stations.value(0).toString(), QStringLiteral("south"));

        // "Clear List" clears this station's rows, whatever the grid shows.
        core::deleteAllReadings(all);
        QCOMPARE(core::countReadings(all), 4);
        QCOMPARE(south.onServer().size(), 4);
        QCOMPARE(north.onServer().size(), 0);
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
        const QString status = station.status();
        QVERIFY2(status.contains(QStringLiteral("; 7 readings waiting; Readings server ") + url +
                                 QStringLiteral(" cannot be reached")),
                 qPrintable(status));

        // A station that died after the server took a batch and before its outbox gave it up
        // sends that batch again at its next start: here a copy of its file taken before.
        const QString copy = station.home.file(QStringLiteral("before.mdb"));
        const QString file = core::dataSourceOf(station.m.dataconn);
        QVERIFY(QFile::copy(file, copy));
        // The last commits may be in the write-ahead log alone.
        QVERIFY(QFile::copy(file + QStringLiteral("-wal"), copy + QStringLiteral("-wal")));
        QVERIFY2(cluster.start(), qPrintable(cluster.error()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("answers again")));
        QCOMPARE(collection::sendWaitingReadings(station.m), 0);
        try {
            core::Connection before = core::Connection::open(copy);
            QCOMPARE(core::countWaiting(before), 7);
            core::OutboxSender again(core::serverOf(station.m.readingsconn));
            QCOMPARE(again.send(before, true), 0);
        } catch (const core::DatabaseError& error) {
            QFAIL(qPrintable(error.text()));
        }
        QCOMPARE(station.onServer(), numbered(0, 5) + awkward + QStringList{"<null>"});
        QVERIFY2(!station.status().contains(QStringLiteral("waiting")),
                 qPrintable(station.status()));
    }

    void passwordComesFromLibpqAlone_data() {
        QTest::addColumn<QByteArray>("pgpassword");
        QTest::addColumn<QByteArray>("passfileLine");
        QTest::addColumn<bool>("passwordInUrl");
        QTest::addColumn<QString>("problem"); // empty: the readings reach the server

        QTest::newRow("from PGPASSWORD")
            << QByteArray("right") << QByteArray() << false << QString();
        QTest::newRow("from the password file")
            << QByteArray() << QByteArray("*:*:*:pwuser:right\n") << false << QString();
        QTest::newRow("wrong password")
            << QByteArray("wrong") << QByteArray() << false
            << QStringLiteral("password authentication failed for user \"pwuser\"");
        QTest::newRow("no password") << QByteArray() << QByteArray() << false
                                     << QStringLiteral("fe_sendauth: no password supplied");
        QTest::newRow("password in the url refused")
            << QByteArray("right") << QByteArray() << true
            << QStringLiteral("holds a password; it belongs in ~/.pgpass or PGPASSWORD");
    }
    void passwordComesFromLibpqAlone() {
        QFETCH(QByteArray, pgpassword);
        QFETCH(QByteArray, passfileLine);
        QFETCH(bool, passwordInUrl);
        QFETCH(QString, problem);
        QString url = freshDatabase(QLatin1String(testsupport::PgCluster::passwordRole));
        if (passwordInUrl) {
            url.replace(QStringLiteral("pwuser@"), QStringLiteral("pwuser:right@"));
        }
        testsupport::TempHome passHome;
        const QString passfile = passHome.file(QStringLiteral("pgpass"));
        QFile file(passfile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(passfileLine);
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        qputenv("PGPASSFILE", passfile.toLocal8Bit());
        if (pgpassword.isEmpty()) {
            qunsetenv("PGPASSWORD");
        } else {
            qputenv("PGPASSWORD", pgpassword);
        }

        Station station(url, QStringLiteral("west"));
        if (!problem.isEmpty()) {
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QRegularExpression::escape(problem)));
        }
        for (const QString& text : numbered(0, 3)) {
            station.store(text);
        }
        qunsetenv("PGPASSWORD");
        qunsetenv("PGPASSFILE");
        if (problem.isEmpty()) {
            QCOMPARE(station.waiting(), 0);
            qputenv("PGPASSWORD", "right");
            QCOMPARE(station.onServer(), numbered(0, 3));
            qunsetenv("PGPASSWORD");
            return;
        }
        // Collected on, locally; the one line says what and where.
        QCOMPARE(station.waiting(), 3);
        const QString status = station.status();
        const QString named = QStringLiteral("3 readings waiting; Readings server ") +
                              url.replace(QStringLiteral(":right@"), QStringLiteral("@")) +
                              QStringLiteral(" cannot be reached: ");
        QVERIFY2(status.contains(named), qPrintable(status));
        QVERIFY2(status.contains(problem), qPrintable(status));
        QVERIFY2(!status.contains(QStringLiteral("right")), qPrintable(status));
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

        // Texts that sort differently by value, by case, by collation, and nulls.
        const char* const scales[] = {"b", "A", "a", "B", "130", "Wägebrücke", "Waage", "", "a"};
        const char* const values[] = {"20", "100", "9", nullptr, "", "-1.5", "100", "é", "e"};
        const QDateTime start(QDate(2026, 1, 31), QTime(23, 59, 58));
        for (int i = 0; i < 27; ++i) {
            const QString scale = QString::fromUtf8(scales[i % 9]);
            const char* value = values[(i * 4) % 9];
            const std::optional<QString> reading =
                value ? std::optional(QString::fromUtf8(value)) : std::nullopt;
            // Several rows share a moment, so the orders reach their last key.
            const QDateTime at = start.addSecs((i / 3) % 4);
            core::insertReading(file, scale, reading, at);
            core::insertReading(server, scale, reading, at);
            core::insertReading(other, QStringLiteral("zz"), reading, at);
        }
        const auto shown = [](const QList<core::DataColRow>& rows) {
            QStringList lines;
            for (const core::DataColRow& row : rows) {
                lines << QStringLiteral("%1|%2|%3|%4|%5")
                             .arg(row.id)
                             .arg(row.scaleId,
                                  row.reading.isNull() ? QStringLiteral("<null>")
                                                       : row.reading.toString(),
                                  row.date, row.time);
            }
            return lines;
        };
        // The server's IDs run on over the other station's rows: compare by the order of arrival.
        QList<core::DataColRow> onServer = core::readings(server, order);
        for (core::DataColRow& row : onServer) {
            row.id = (row.id + 1) / 2;
        }
        const QList<core::DataColRow> onFile = core::readings(file, order);
        QCOMPARE(shown(onServer), shown(onFile));

        // The grid pages from a key through each store's index: page by page from both ends.
        for (bool after : {true, false}) {
            QList<core::DataColRow> paged = core::readingsAt(server, order, 0, 4, !after);
            for (int guard = 0; guard < 20; ++guard) {
                const core::DataColRow key = after ? paged.last() : paged.first();
                const auto next = core::readingsBeside(server, order, key, 4, after);
                if (!next || next->isEmpty()) {
                    break;
                }
                paged = after ? paged + *next : *next + paged;
            }
            QList<core::DataColRow> expected = core::readings(server, order);
            // A key that holds a null cannot be paged from; the grid counts from an end instead.
            const qsizetype reach = paged.size();
            expected = after ? expected.mid(0, reach) : expected.mid(expected.size() - reach);
            QCOMPARE(shown(paged), shown(expected));
            QVERIFY(reach >= 4);
        }
    }
};

QTEST_GUILESS_MAIN(TestPgStore)
#include "test_pg_store.moc"
