// The Setup dialog driven with the keyboard alone: access keys, Tab, typing, Escape.
#include "SetupFixture.h"
#include "core/SetupView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

using namespace stellwyn;
using setuptest::SetupFixture;

class SetupViewTest : public QObject {
    Q_OBJECT
private slots:
    void keyboard_choosesTheLinkEditsARecordAndCloses();
};

void SetupViewTest::keyboard_choosesTheLinkEditsARecordAndCloses() {
    SetupFixture f;
    f.addScale(QStringLiteral("RS232"), 1);
    f.addScale(QStringLiteral("RS485"), 130);
    core::Setup& setup = f.load();
    core::SetupView view(setup);
    view.show();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    const auto edit = [&](const char* name) {
        return view.findChild<QLineEdit*>(QString::fromLatin1(name));
    };
    const auto focused = [] { return QApplication::focusWidget(); };

    // The hidden controls exist and stay hidden; Ethernet is offered, its address box only
    // usable with it.
    QVERIFY(edit("Text1") != nullptr && !edit("Text1")->isVisible());
    QVERIFY(view.findChild<QRadioButton*>(QStringLiteral("opt_ethernet"))->isVisible());
    QVERIFY(edit("txt_IP_address")->isVisible() && !edit("txt_IP_address")->isEnabled());
    QVERIFY(!view.findChild<QCheckBox*>(QStringLiteral("Chk_TimerDataLog"))->isVisible());

    // RS232 at first: the records are out of reach, the port's device is typed by hand.
    QLineEdit* netId = edit("txtFields4");
    QVERIFY(!netId->isEnabled());
    QTest::keyClick(focused(), Qt::Key_V, Qt::AltModifier);
    auto* device = view.findChild<QComboBox*>(QStringLiteral("cmb_device"));
    QCOMPARE(focused(), device);
    device->lineEdit()->selectAll();
    const QString pty = f.home.file(QStringLiteral("pts-7"));
    QTest::keyClicks(device->lineEdit(), pty);
    QTest::keyClick(focused(), Qt::Key_Tab);
    QCOMPARE(f.settings.serialDevicePath(1), pty);
    QVERIFY(view.findChild<QLabel*>(QStringLiteral("cmb_device_error"))->isVisible());

    // Alt+U chooses USB-RS485.
    QTest::keyClick(focused(), Qt::Key_U, Qt::AltModifier);
    QTRY_VERIFY(netId->isEnabled());
    QCOMPARE(f.stored(QStringLiteral("select commtype from syscfg")).toString(),
             QStringLiteral("USB485"));

    // Alt+I reaches the NetID; what is typed is written when Tab leaves the box.
    QTest::keyClick(focused(), Qt::Key_I, Qt::AltModifier);
    QCOMPARE(focused(), netId);
    netId->selectAll();
    QTest::keyClicks(netId, QStringLiteral("131"));
    QTest::keyClick(netId, Qt::Key_Tab);
    QVERIFY(focused() != netId);
    QCOMPARE(f.stored(QStringLiteral("select NetID from ScaleCFG where sctype = 'RS485'")).toInt(),
             131);

    // Alt+C adds a scale and leaves its NetID selected, so typing replaces it.
    QTest::keyClick(focused(), Qt::Key_C, Qt::AltModifier);
    QTRY_COMPARE(focused(), netId);
    QCOMPARE(netId->selectedText(), QStringLiteral("131"));
    QTest::keyClicks(netId, QStringLiteral("132"));

    // Escape closes as Cancel does, and the NetID being typed is written first.
    QTest::keyClick(netId, Qt::Key_Escape);
    QTRY_VERIFY(!view.isVisible());
    QVERIFY(setup.unloaded());
    QCOMPARE(f.stored(QStringLiteral("select group_concat(NetID) from (select NetID from "
                                     "ScaleCFG order by ID)"))
                 .toString(),
             QStringLiteral("1,131,132"));
    QCOMPARE(f.m.commtype, QStringLiteral("USB485"));
}

QTEST_MAIN(SetupViewTest)
#include "test_setup_view.moc"
