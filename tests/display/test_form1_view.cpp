// The main screen's window on simulated scales: a reply changes the live weight on screen, the
// scan table follows every scale, and the keys are hit where they are drawn at any size.
#include "ScreenFixture.h"
#include "display/Form1Host.h"
#include "display/Form1View.h"
#include "display/IndicatorPictureView.h"
#include "display/Keypad.h"
#include "display/SlaveView.h"
#include "links/SimFtdi.h"
#include "sim/WireTime.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPointer>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

using namespace stellwyn;

namespace {

struct SimScreen {
    SimScreen()
        : s(QStringLiteral("USB485"), QStringLiteral("RS485/130 RS485/131")),
          sim({130, 131}, s.clock), form(s.newForm(&sim)), view(form) {
        form.Form_Load();
        form.Form_Activate();
    }
    void weigh(int netId, double value) {
        sim.bus().find(netId)->weight().set(value, sim::lineSeconds(s.clock));
    }
    QString screenText() const { return view.findChild<QLabel*>(QStringLiteral("Screen"))->text(); }

    displaytest::ScreenFixture s;
    links::SimFtdi sim;
    display::Form1& form;
    display::Form1View view;
};

void sendMouse(QWidget* target, QEvent::Type type, const QPoint& at) {
    QMouseEvent event(type, at, target->mapToGlobal(at), Qt::LeftButton,
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

} // namespace

class Form1ViewTest : public QObject {
    Q_OBJECT
private slots:
    void screenLabel_showsTheReplyOfTheChosenScale();
    void keypad_hitsTheKeyDrawnThere_data();
    void keypad_hitsTheKeyDrawnThere();
    void keypad_keysByShortcutAndAccessibleName();
    void slave_followsItsScaleAndSelectsItOnClick();
    void readingWithLetters_takesTheFourteenSegmentFace_data();
    void readingWithLetters_takesTheFourteenSegmentFace();
    void host_showsAFreshScreenOnceTheUnloadedOneHasGone();
    void dataGrid_columnsHoldTheirTextAtAnySize_data() { keypad_hitsTheKeyDrawnThere_data(); }
    void dataGrid_columnsHoldTheirTextAtAnySize();
};

void Form1ViewTest::screenLabel_showsTheReplyOfTheChosenScale() {
    SimScreen screen;
    screen.weigh(130, 12.5);
    screen.weigh(131, 77.7);
    screen.s.timers->runFor(1.0);
    screen.view.sync();
    QCOMPARE(screen.screenText(), screen.s.m.scaleweight[0]);
    QVERIFY2(screen.screenText().endsWith(QStringLiteral("12.5")), qPrintable(screen.screenText()));

    screen.weigh(130, 250.0);
    screen.s.timers->runFor(1.0);
    screen.view.sync();
    QVERIFY2(screen.screenText().endsWith(QStringLiteral("250.0")),
             qPrintable(screen.screenText()));
    // Scale 131 is not on the display, but its row of the scan table follows it.
    auto* grid = screen.view.findChild<QTableWidget*>(QStringLiteral("NetList"));
    QCOMPARE(grid->rowCount(), 2);
    QCOMPARE(grid->item(0, 0)->text(), QStringLiteral("SCALE RS485 ID#130"));
    QVERIFY(grid->item(1, 1)->text().endsWith(QStringLiteral("77.7")));
}

void Form1ViewTest::keypad_hitsTheKeyDrawnThere_data() {
    QTest::addColumn<double>("zoom");
    QTest::newRow("design size") << 1.0;
    QTest::newRow("twice the size") << 2.0;
    QTest::newRow("smaller") << 0.7;
}

void Form1ViewTest::keypad_hitsTheKeyDrawnThere() {
    QFETCH(double, zoom);
    SimScreen screen;
    const QRect design = screen.view.formGeometry();
    screen.view.resize(static_cast<int>(design.width() * zoom),
                       static_cast<int>(design.height() * zoom * 1.5));
    screen.view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&screen.view));
    display::IndicatorPictureView* picture = screen.view.picture();
    const double scale = picture->scale();
    // The middle of "E", then a point just past column 1.
    const QPoint e(static_cast<int>((7725 + 8565) / 2 * scale),
                   static_cast<int>((3765 + 4275) / 2 * scale));
    sendMouse(picture, QEvent::MouseMove, e);
    sendMouse(picture, QEvent::MouseButtonPress, e);
    sendMouse(picture, QEvent::MouseButtonRelease, e);
    // The screen is in network mode: the key waits for the next pass.
    QCOMPARE(screen.s.m.keypending, 1);
    QCOMPARE(screen.s.m.keycode, 11);
    QVERIFY(screen.s.dialogs.said.isEmpty());

    const QPoint gap(static_cast<int>(6391 * scale) + 2, static_cast<int>(1000 * scale));
    sendMouse(picture, QEvent::MouseMove, gap);
    sendMouse(picture, QEvent::MouseButtonPress, gap);
    sendMouse(picture, QEvent::MouseButtonRelease, gap);
    QCOMPARE(screen.s.dialogs.said, QStringList{QStringLiteral("beep")});
}

void Form1ViewTest::keypad_keysByShortcutAndAccessibleName() {
    SimScreen screen;
    screen.view.show();
    QApplication::setActiveWindow(&screen.view);
    QVERIFY(QTest::qWaitForWindowActive(&screen.view));
    // The screen is in network mode: a key waits for the next pass. A shortcut shows the key
    // pressed for a moment before it acts.
    QTest::keyClick(&screen.view, Qt::Key_7);
    QTRY_COMPARE(screen.s.m.keypending, 1);
    QCOMPARE(screen.s.m.keycode, 7);
    QTest::keyClick(&screen.view, Qt::Key_Period);
    QTRY_COMPARE(screen.s.m.keycode, 10);

    QAbstractButton* enter = nullptr;
    for (auto* key : screen.view.picture()->findChildren<QAbstractButton*>()) {
        if (key->accessibleName() == u"E") {
            enter = key;
        }
    }
    QVERIFY(enter != nullptr);
    enter->setFocus();
    QTest::keyClick(enter, Qt::Key_Space);
    QCOMPARE(screen.s.m.keycode, 11);
    QVERIFY(screen.s.dialogs.said.isEmpty());
}

void Form1ViewTest::slave_followsItsScaleAndSelectsItOnClick() {
    SimScreen screen;
    screen.s.f().Combo1.setListIndex(1);
    screen.s.f().Command11.Click();
    screen.s.f().Combo1.setListIndex(0);
    display::SlaveView* slave = screen.view.slaveWindows()->window(1);
    QVERIFY(slave != nullptr && slave->isVisible());
    QCOMPARE(slave->windowTitle(), QStringLiteral("SCALE RS485 ID#131"));

    screen.weigh(130, 12.5);
    screen.weigh(131, 77.7);
    screen.s.timers->runFor(1.0);
    QVERIFY2(slave->screenLabel()->text().endsWith(QStringLiteral("77.7")),
             qPrintable(slave->screenLabel()->text()));

    const QPoint digits = slave->screenLabel()->geometry().center();
    sendMouse(slave, QEvent::MouseButtonRelease, digits);
    QCOMPARE(screen.s.f().Combo1.listIndex(), 1);

    slave->close();
    QVERIFY(!slave->isVisible());
    QCOMPARE(screen.s.m.slaveopen[1], 0);
}

void Form1ViewTest::readingWithLetters_takesTheFourteenSegmentFace_data() {
    QTest::addColumn<QString>("reading");
    QTest::addColumn<QString>("family");
    QTest::newRow("digits") << QStringLiteral("  12.5") << display::lookAlikeFamily();
    QTest::newRow("negative") << QStringLiteral(" -12.5") << display::lookAlikeFamily();
    QTest::newRow("overload") << QStringLiteral("  OVER") << display::letterLookAlikeFamily();
    QTest::newRow("unit") << QStringLiteral("12.5kg") << display::letterLookAlikeFamily();
}

void Form1ViewTest::readingWithLetters_takesTheFourteenSegmentFace() {
    QFETCH(QString, reading);
    QFETCH(QString, family);
    const display::ScreenFace face = display::Form1Layout::screenFace(0);
    if (QFontDatabase::hasFamily(face.family)) {
        QSKIP("The display face itself is installed here.");
    }
    display::DisplayLabel label;
    label.setFace(face, 1.0 / 15.0);
    label.setReading(QStringLiteral("  00.0"));
    label.setReading(reading);
    QCOMPARE(label.font().family(), family);
}

// A pick of the menu while the last screen is unloaded but still in its handler.
void Form1ViewTest::host_showsAFreshScreenOnceTheUnloadedOneHasGone() {
    displaytest::ScreenFixture s(QStringLiteral("RS232"));
    QMdiArea area;
    display::Form1Host host(area, [&s] { return s.makeForm(nullptr, false); });
    host.show();
    QTRY_COMPARE(s.m.formactive, core::vbTrue);
    QPointer<display::Form1> first = host.form();
    first->runEvent([&] {
        first->Command1_Click();
        host.show();
        const QList<QMdiSubWindow*> windows = area.subWindowList();
        QVERIFY(std::none_of(windows.begin(), windows.end(),
                             [](const QMdiSubWindow* w) { return !w->isHidden(); }));
    });
    QTRY_VERIFY(first.isNull() && host.form() != nullptr);
    QTRY_COMPARE(s.m.formactive, core::vbTrue);
    QVERIFY(!host.form()->isUnloaded());
    QCOMPARE(area.subWindowList().size(), 1);
}

void Form1ViewTest::dataGrid_columnsHoldTheirTextAtAnySize() {
    QFETCH(double, zoom);
    SimScreen screen;
    screen.s.timers->runFor(1.0);
    screen.s.f().btn_dataLogAll.Click();
    screen.s.f().opt_datacol.setValue(true);
    const QRect design = screen.view.formGeometry();
    screen.view.resize(static_cast<int>(design.width() * zoom),
                       static_cast<int>(design.height() * zoom * 1.5));
    screen.view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&screen.view));
    auto* table = screen.view.findChild<QTableView*>(QStringLiteral("DataGrid1"));
    // The table's own measure of its cells, which it keeps out of its public face.
    const QAbstractItemView* grid = table;
    QCOMPARE(table->model()->rowCount(), 2);
    for (int c = 0; c < table->model()->columnCount(); ++c) {
        const int needed =
            std::max(grid->sizeHintForColumn(c), table->horizontalHeader()->sectionSizeHint(c));
        QVERIFY2(table->columnWidth(c) >= needed,
                 qPrintable(QStringLiteral("column %1: %2 px for %3")
                                .arg(c)
                                .arg(table->columnWidth(c))
                                .arg(needed)));
    }
}

QTEST_MAIN(Form1ViewTest)
#include "test_form1_view.moc"
