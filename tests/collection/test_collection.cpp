// Keeping readings and showing them: the pane's buttons and log timers, the grid's sort orders,
// "Clear List", the count caption, and the paged grid model against a plain query.
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "collection/CollectionGrid.h"
#include "collection/DataColModel.h"
#include "collection/ReadingCollection.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"
#include "core/store/ScaleCfgTable.h"

#include <QRandomGenerator>
#include <QTest>

using namespace stellwyn;
using core::DataColOrder;

Q_DECLARE_METATYPE(DataColOrder)

namespace {

// A main screen's collection pane over a fresh database, with three scales in its list.
struct Pane {
    Pane() : collection(m, f, clock), grid(f, dialogs) {
        core::createDatabase(home.path());
        m.dataconn = core::connectionText(home.path());
        m.cfgconn = m.dataconn;
        f.data2.ConnectionString = m.dataconn;
        f.data2.RecordSource = collection::CollectionGrid::baseQuery;
        f.data2.Refreshed = [this] { model.refresh(grid.order()); };
        model.bind(m.dataconn, grid.order());
        const int ids[] = {130, 131, 132};
        for (int i = 0; i < 3; ++i) {
            m.netid[i] = ids[i];
            m.scaledesc[i] = QStringLiteral("SCALE %1").arg(ids[i]);
            f.Combo1.addItem(m.scaledesc[i]);
        }
        m.scalecount = 3;
        collection.attach();
        grid.attach();
    }

    core::Connection db() { return core::Connection::open(m.dataconn); }
    QList<core::DataColRow> rows() {
        core::Connection c = db();
        return core::readings(c, DataColOrder::byId);
    }
    void store(const QString& scaleId, const QString& reading, const QDateTime& at) {
        core::Connection c = db();
        core::insertReading(c, scaleId, reading, at);
    }

    testsupport::TempHome home;
    core::VirtualClock clock{QDateTime(QDate(2026, 5, 4), QTime(9, 30))};
    core::Module1 m;
    core::Form1Controls f;
    testsupport::RecordingDialogs dialogs;
    collection::ReadingCollection collection;
    collection::CollectionGrid grid;
    collection::DataColModel model;
};

QString fields(const core::DataColRow& row) {
    return QStringLiteral("%1|%2|%3 %4")
        .arg(row.scaleId, row.reading.isNull() ? QStringLiteral("<null>") : row.reading.toString(),
             row.date, row.time);
}

} // namespace

class CollectionTest : public QObject {
    Q_OBJECT
private slots:
    void saveButtons_keepTheRowsOfTheirScales_data();
    void saveButtons_keepTheRowsOfTheirScales();
    void check1_givesLogTimersToPolledRowsInNetIdOrder();
    void timer5_storesFirstOnTickNPlusOneThenEveryN_data();
    void timer5_storesFirstOnTickNPlusOneThenEveryN();
    void sortOptions_orderTheGridAndLeaveTheCount_data();
    void sortOptions_orderTheGridAndLeaveTheCount();
    void clearList_asksFirstAndNoChangesNothing();
    void model_matchesAPlainQueryInEveryOrder_data();
    void model_matchesAPlainQueryInEveryOrder();
};

void CollectionTest::saveButtons_keepTheRowsOfTheirScales_data() {
    QTest::addColumn<bool>("all");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QStringList>("weights");
    QTest::addColumn<QStringList>("stored");

    const QStringList someWeights{QStringLiteral(" 12.5"), QString(), QStringLiteral("  7.0")};
    QTest::newRow("Save Current keeps the selected scale under its NetID")
        << false << 2 << someWeights << QStringList{"132|  7.0|2026-05-04 09:30:00"};
    QTest::newRow("Save Current with no reading keeps nothing")
        << false << 1 << someWeights << QStringList{};
    QTest::newRow("Save Current with no scale selected keeps nothing and says nothing")
        << false << -1 << someWeights << QStringList{};
    QTest::newRow("Save All keeps a row per scale, the empty reading left out")
        << true << 0 << someWeights
        << QStringList{"130| 12.5|2026-05-04 09:30:00", "131|<null>|2026-05-04 09:30:00",
                       "132|  7.0|2026-05-04 09:30:00"};
}

void CollectionTest::saveButtons_keepTheRowsOfTheirScales() {
    QFETCH(bool, all);
    QFETCH(int, selected);
    QFETCH(QStringList, weights);
    QFETCH(QStringList, stored);

    Pane p;
    for (int i = 0; i < weights.size(); ++i) {
        p.m.scaleweight[i] = weights.at(i);
    }
    if (selected >= 0) {
        p.f.Combo1.setListIndex(selected);
    }
    (all ? p.f.btn_dataLogAll : p.f.btn_LogData).Click();

    QStringList got;
    for (const core::DataColRow& row : p.rows()) {
        got << fields(row);
    }
    QCOMPARE(got, stored);
    QCOMPARE(p.dialogs.said, QStringList{});
    // Neither button writes the count caption.
    QCOMPARE(p.f.Label20.caption, QStringLiteral("Data Collection"));
}

void CollectionTest::check1_givesLogTimersToPolledRowsInNetIdOrder() {
    Pane p;
    {
        core::Connection c = p.db();
        // In NetID order: 5 polled every 3, 9 not polled, 20 polled every 0, 127 too high,
        // and an RS232 row, which never logs.
        auto add = [&](const char* type, int netId, bool pollActive, int pollTime) {
            const qint64 id = core::insertScaleCfg(c, core::NewScaleCfg{QString::fromLatin1(type),
                                                                        QStringLiteral("S"),
                                                                        QString(),
                                                                        netId,
                                                                        true,
                                                                        {},
                                                                        {}});
            core::updateScaleSetupFields(c, id,
                                         {QString::fromLatin1(type), netId, QStringLiteral("S"),
                                          true, pollTime, pollActive});
        };
        add("RS485", 20, true, 0);
        add("RS485", 127, true, 2);
        add("RS485", 9, false, 4);
        add("RS232", 1, true, 1);
        add("RS485", 5, true, 3);
    }
    p.m.curscale = 1;
    p.f.Check1.setValue(1);

    QCOMPARE(p.m.scalelogging[1], std::int16_t(-1));
    QVERIFY(p.f.Timer5[0].running() && p.f.Timer5[1].running());
    QCOMPARE(p.f.Timer5[0].interval(), 950);
    QVERIFY(!p.f.Timer5[2].enabled());
    QCOMPARE(p.m.slavepollmax[0], 3);
    QCOMPARE(p.m.slavepollmax[1], 0);

    p.m.scaleweight[0] = QStringLiteral("  1.0");
    p.f.Timer5[1].Tick();
    // Member 1 logs slot 1, whichever scale its row is.
    QCOMPARE(p.rows().size(), 1);
    QCOMPARE(fields(p.rows().first()), QStringLiteral("SCALE 131|<null>|2026-05-04 09:30:00"));

    p.f.Check1.setValue(0);
    QCOMPARE(p.m.scalelogging[1], std::int16_t(0));
    for (int i = 0; i < core::timer5Count; ++i) {
        QVERIFY(!p.f.Timer5[i].enabled());
        QCOMPARE(p.m.slavepollmax[i], 0);
    }
}

void CollectionTest::timer5_storesFirstOnTickNPlusOneThenEveryN_data() {
    QTest::addColumn<int>("n");
    QTest::addColumn<QList<int>>("storingTicks");
    QTest::newRow("0: every tick") << 0 << QList<int>{1, 2, 3, 4, 5, 6, 7};
    QTest::newRow("1: every tick from the second") << 1 << QList<int>{2, 3, 4, 5, 6, 7};
    QTest::newRow("3: tick 4, then every third") << 3 << QList<int>{4, 7};
}

void CollectionTest::timer5_storesFirstOnTickNPlusOneThenEveryN() {
    QFETCH(int, n);
    QFETCH(QList<int>, storingTicks);
    Pane p;
    p.m.scaleweight[2] = QStringLiteral(" 99.9");
    p.m.slavepollmax[2] = n;
    QList<int> storing;
    for (int tick = 1; tick <= 7; ++tick) {
        const auto before = p.rows().size();
        p.f.Timer5[2].Tick();
        if (p.rows().size() > before) {
            storing << tick;
        }
    }
    QCOMPARE(storing, storingTicks);
    QCOMPARE(fields(p.rows().first()), QStringLiteral("SCALE 132| 99.9|2026-05-04 09:30:00"));
}

void CollectionTest::sortOptions_orderTheGridAndLeaveTheCount_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QList<qint64>>("ids");

    // Rows 1-5 as stored below.
    QTest::newRow("Weight is text order, equal readings by date then time")
        << "opt_grp"
        << " order by Reading, date,time" << QList<qint64>{4, 2, 1, 5, 3};
    QTest::newRow("Dat/Time") << "opt_datetime"
                              << " order by date,time" << QList<qint64>{2, 1, 3, 4, 5};
    QTest::newRow("Scale ID") << "opt_desc"
                              << " order by scaleid, date,time" << QList<qint64>{2, 3, 1, 4, 5};
}

void CollectionTest::sortOptions_orderTheGridAndLeaveTheCount() {
    QFETCH(QString, option);
    QFETCH(QString, query);
    QFETCH(QList<qint64>, ids);

    Pane p;
    const QDate day(2026, 5, 4);
    p.store(QStringLiteral("B"), QStringLiteral("20"), QDateTime(day, QTime(10, 0)));
    p.store(QStringLiteral("A"), QStringLiteral("20"), QDateTime(day.addDays(-1), QTime(11, 0)));
    p.store(QStringLiteral("A"), QStringLiteral("9"), QDateTime(day, QTime(10, 5)));
    p.store(QStringLiteral("C"), QStringLiteral("100"), QDateTime(day, QTime(10, 9)));
    p.f.opt_datacol.setValue(true);
    QCOMPARE(p.f.Label20.caption, QStringLiteral("Data Collection - 4 Readings"));
    p.store(QStringLiteral("C"), QStringLiteral("5"), QDateTime(day, QTime(23, 0)));

    core::OptionButton* chosen = option == u"opt_grp"        ? &p.f.opt_grp
                                 : option == u"opt_datetime" ? &p.f.opt_datetime
                                                             : &p.f.opt_desc;
    chosen->setValue(true);
    QCOMPARE(p.f.data2.RecordSource, collection::CollectionGrid::baseQuery + query);
    QList<qint64> shown;
    for (int r = 0; r < p.model.rowCount(); ++r) {
        shown << p.model.rowAt(r).id;
    }
    QCOMPARE(shown, ids);
    // A sort click re-reads the rows but leaves the count caption as it was.
    QCOMPARE(p.f.Label20.caption, QStringLiteral("Data Collection - 4 Readings"));
}

void CollectionTest::clearList_asksFirstAndNoChangesNothing() {
    Pane p;
    p.store(QStringLiteral("130"), QStringLiteral("1"), p.clock.now());
    p.store(QStringLiteral("131"), QStringLiteral("2"), p.clock.now());
    p.f.opt_datacol.setValue(true);
    const QString question =
        QStringLiteral("question: : This action will completely clear all of the saved "
                       "data.\\nDo you wish to proceed?");

    p.dialogs.answers = {false};
    p.f.Command2.Click();
    QCOMPARE(p.dialogs.said, (QStringList{"beep", question}));
    QCOMPARE(p.rows().size(), 2);
    QCOMPARE(p.f.Label20.caption, QStringLiteral("Data Collection - 2 Readings"));

    p.dialogs.answers = {true};
    p.f.Command2.Click();
    QCOMPARE(p.rows().size(), 0);
    QCOMPARE(p.model.rowCount(), 0);
    QCOMPARE(p.f.Label20.caption, QStringLiteral("Data Collection - 0 Readings"));
}

void CollectionTest::model_matchesAPlainQueryInEveryOrder_data() {
    QTest::addColumn<DataColOrder>("order");
    QTest::newRow("store order") << DataColOrder::storeOrder;
    QTest::newRow("ID") << DataColOrder::byId;
    QTest::newRow("date and time") << DataColOrder::byDateTime;
    QTest::newRow("scale") << DataColOrder::byScaleId;
    QTest::newRow("reading") << DataColOrder::byReading;
}

void CollectionTest::model_matchesAPlainQueryInEveryOrder() {
    QFETCH(DataColOrder, order);
    Pane p;
    {
        // Few distinct keys, so that pages break inside runs of equal readings and times;
        // some readings null, as "Save All" leaves them.
        core::Connection c = p.db();
        core::Transaction t(c);
        QRandomGenerator random(7);
        const QDateTime start(QDate(2026, 1, 1), QTime(0, 0));
        for (int i = 0; i < 10000; ++i) {
            const int r = static_cast<int>(random.bounded(40));
            core::insertReading(c, QStringLiteral("S%1").arg(random.bounded(5)),
                                r == 0 ? std::nullopt : std::optional<QString>(QString::number(r)),
                                start.addSecs(random.bounded(600) * 60));
        }
        t.commit();
    }
    core::Connection c = p.db();
    const QList<core::DataColRow> expected = core::readings(c, order);
    p.model.refresh(order);
    QCOMPARE(p.model.rowCount(), 10000);

    auto same = [&](int r) { return p.model.rowAt(r).id == expected.at(r).id; };
    // Straight through, as scrolling reads it; backwards from the end; and jumps.
    for (int r = 0; r < 10000; ++r) {
        QVERIFY2(same(r), qPrintable(QString::number(r)));
    }
    p.model.refresh(order);
    for (int r = 9999; r >= 0; r -= 7) {
        QVERIFY2(same(r), qPrintable(QString::number(r)));
    }
    p.model.refresh(order);
    QRandomGenerator jumps(11);
    for (int k = 0; k < 200; ++k) {
        const int r = static_cast<int>(jumps.bounded(10000));
        QVERIFY2(same(r), qPrintable(QString::number(r)));
    }
}

QTEST_GUILESS_MAIN(CollectionTest)
#include "test_collection.moc"
