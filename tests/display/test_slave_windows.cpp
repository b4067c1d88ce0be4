// The slave windows: where they open, which of them the layout keeps, restores and closes,
// and what a click on their digits selects.
#include "ScreenFixture.h"
#include "core/FatalError.h"
#include "core/store/Connection.h"

#include <QSqlQuery>
#include <QTest>

using namespace stellwyn;
using displaytest::ScreenFixture;

namespace {

QString netRows(int count) {
    QStringList rows;
    for (int i = 0; i < count; ++i) {
        rows << QStringLiteral("RS485/%1").arg(130 + i);
    }
    return rows.join(u' ');
}

// The screen on a network of `count` scales, activated.
struct SlaveScreen {
    explicit SlaveScreen(int count, const QList<std::pair<QString, QVariant>>& syscfg = {})
        : s(QStringLiteral("USB485"), netRows(count)) {
        for (const auto& [field, value] : syscfg) {
            displaytest::setSysCfg(s.home.path(), field, value);
        }
        s.ftdi.devices = {{"A1", "adapter"}};
        s.newForm().Form_Load();
        s.form().Form_Activate();
    }
    display::SlaveWindows& slaves() { return s.form().slaves(); }
    void openFor(int scale) {
        s.m.curscale = static_cast<std::int16_t>(scale);
        s.f().Command11.Click();
    }
    QVariantList stored(int k) {
        core::Connection c = core::Connection::open(s.m.cfgconn);
        QSqlQuery q =
            c.run(QStringLiteral("select slave%1enb, slave%1left, slave%1top from syscfg").arg(k));
        q.next();
        return {q.value(0), q.value(1), q.value(2)};
    }

    ScreenFixture s;
};

} // namespace

class SlaveWindowsTest : public QObject {
    Q_OBJECT
private slots:
    void open_placesTheFirstFiveInAColumn_data();
    void open_placesTheFirstFiveInAColumn();
    void save_keepsSlavesZeroToEightAndCloseAllLeavesNine();
    void restore_opensEnabledSlavesEvenPastTheList();
    void screenClick_selectsTheScaleOrFailsPastTheList();
    void form1Unload_closesAllTen();
};

void SlaveWindowsTest::open_placesTheFirstFiveInAColumn_data() {
    QTest::addColumn<int>("k");
    QTest::addColumn<bool>("placed");
    QTest::addColumn<int>("top");
    QTest::newRow("0") << 0 << true << 0;
    QTest::newRow("4") << 4 << true << 8055;
    QTest::newRow("5 opens where the system puts it") << 5 << false << 0;
    QTest::newRow("9") << 9 << false << 0;
}

void SlaveWindowsTest::open_placesTheFirstFiveInAColumn() {
    QFETCH(int, k);
    QFETCH(bool, placed);
    QFETCH(int, top);
    SlaveScreen screen(11);
    screen.openFor(k);
    const display::SlaveForm& form = screen.slaves().slave(k);
    QVERIFY(form.loaded && form.visible);
    QCOMPARE(screen.s.m.slaveopen[k], 1);
    QCOMPARE(form.Caption, QStringLiteral("SCALE RS485 ID#%1").arg(130 + k));
    QCOMPARE(form.Width, 3615);
    QCOMPARE(form.Height, 1995);
    QCOMPARE(form.placed, placed);
    if (placed) {
        QCOMPARE(form.Left, 11535);
        QCOMPARE(form.Top, top);
    }
    // Opening twice puts it back in its place.
    screen.slaves().moved(k, 10, 20);
    screen.openFor(k);
    QCOMPARE(form.Left, placed ? 11535 : 10);
}

void SlaveWindowsTest::save_keepsSlavesZeroToEightAndCloseAllLeavesNine() {
    SlaveScreen screen(11,
                       {{QStringLiteral("slave6left"), 555}, {QStringLiteral("slave6top"), 666}});
    for (int k : {2, 6, 9}) {
        screen.openFor(k);
    }
    // The entry past the last window has a flag and no window.
    screen.openFor(10);
    QCOMPARE(screen.s.m.slaveopen[10], 1);

    screen.slaves().moved(2, 100, 200);
    screen.slaves().unload(6); // closed by hand
    QCOMPARE(screen.s.m.slaveopen[6], 0);
    screen.s.f().btn_saveslave.Click();
    QCOMPARE(screen.stored(2), (QVariantList{-1, 100, 200}));
    QCOMPARE(screen.stored(6), (QVariantList{0, 555, 666}));

    screen.s.f().btn_closeallslaves.Click();
    QVERIFY(!screen.slaves().slave(2).loaded);
    QCOMPARE(screen.s.m.slaveopen[2], 0);
    QVERIFY(screen.slaves().slave(9).loaded);
    QCOMPARE(screen.s.m.slaveopen[9], 1);

    screen.s.f().btn_slavesload.Click();
    const display::SlaveForm& two = screen.slaves().slave(2);
    QVERIFY(two.visible);
    QCOMPARE(QList<int>({two.Left, two.Top}), QList<int>({100, 200}));
    QCOMPARE(screen.s.m.slaveopen[2], 1);
    QVERIFY(!screen.slaves().slave(6).loaded);
}

void SlaveWindowsTest::restore_opensEnabledSlavesEvenPastTheList() {
    SlaveScreen screen(3, {{QStringLiteral("slave7enb"), -1},
                           {QStringLiteral("slave7left"), 300},
                           {QStringLiteral("slave7top"), 400}});
    const display::SlaveForm& seven = screen.slaves().slave(7);
    QVERIFY(seven.visible);
    QCOMPARE(seven.Caption, QString());
    QCOMPARE(QList<int>({seven.Left, seven.Top}), QList<int>({300, 400}));
    // Restoring never closes a window the layout does not enable.
    screen.openFor(1);
    screen.s.f().btn_slavesload.Click();
    QVERIFY(screen.slaves().slave(1).visible);
}

void SlaveWindowsTest::screenClick_selectsTheScaleOrFailsPastTheList() {
    SlaveScreen screen(3);
    screen.openFor(2);
    screen.openFor(7);
    screen.s.f().Combo1.setListIndex(0);
    screen.slaves().Screen_Click(2);
    QCOMPARE(screen.s.f().Combo1.listIndex(), 2);
    QCOMPARE(screen.s.m.curscale, 2);
    QVERIFY_THROWS_EXCEPTION(core::FatalError, screen.slaves().Screen_Click(7));
}

void SlaveWindowsTest::form1Unload_closesAllTen() {
    SlaveScreen screen(11);
    screen.openFor(3);
    screen.openFor(9);
    screen.s.form().Command1_Click();
    for (int k : {3, 9}) {
        QVERIFY(!screen.slaves().slave(k).loaded);
        QCOMPARE(screen.s.m.slaveopen[k], 0);
    }
}

QTEST_MAIN(SlaveWindowsTest)
#include "test_slave_windows.moc"
