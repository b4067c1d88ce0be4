// The keypad on the picture: which key a point hits, the beep on a miss, and the bytes each
// link sends for a key at once, or the key left pending for the next network pass (whose
// sending is the mode timers' test).
#include "Bytes.h"
#include "ScreenFixture.h"
#include "display/Keypad.h"

#include <QTest>

using namespace stellwyn;
using display::Keypad;

using testsupport::bytes;

class KeypadTest : public QObject {
    Q_OBJECT
private slots:
    void keyAt_bandsIncludeBothEnds_data();
    void keyAt_bandsIncludeBothEnds();
    void click_missBeepsAndSendsNothing_data();
    void click_missBeepsAndSendsNothing();
    void click_sendsTheKeyOnEachLink_data();
    void click_sendsTheKeyOnEachLink();
};

void KeypadTest::keyAt_bandsIncludeBothEnds_data() {
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("keycode"); // -1: no key

    QTest::newRow("7 at its top left corner") << 5550 << 885 << 7;
    QTest::newRow("7 at its bottom right corner") << 6390 << 1425 << 7;
    QTest::newRow("past column 1") << 6391 << 1000 << -1;
    QTest::newRow("before column 1") << 5549 << 1000 << -1;
    QTest::newRow("between rows 1 and 2") << 6000 << 1600 << -1;
    QTest::newRow("5") << 7000 << 2000 << 5;
    QTest::newRow("3") << 8565 << 3345 << 3;
    QTest::newRow("point") << 5550 << 4275 << 10;
    QTest::newRow("0") << 7470 << 3765 << 0;
    QTest::newRow("E") << 8000 << 4000 << 11;
    QTest::newRow("below row 4") << 8000 << 4276 << -1;
    QTest::newRow("the display window") << 2000 << 1500 << -1;
}

void KeypadTest::keyAt_bandsIncludeBothEnds() {
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(int, keycode);
    QCOMPARE(Keypad::keyAt(x, y).value_or(-1), keycode);
}

void KeypadTest::click_missBeepsAndSendsNothing_data() {
    QTest::addColumn<bool>("moved");
    QTest::newRow("at X 6391") << true;
    QTest::newRow("before any pointer move") << false;
}

void KeypadTest::click_missBeepsAndSendsNothing() {
    QFETCH(bool, moved);
    displaytest::ScreenFixture s(QStringLiteral("RS232"));
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();
    const QByteArray before = s.port().written;
    if (moved) {
        form.keypad().vsElastic1_MouseMove(6391, 1000);
    }
    form.keypad().vsElastic1_Click();
    QCOMPARE(s.dialogs.said, QStringList{QStringLiteral("beep")});
    QCOMPARE(s.port().written, before);
}

void KeypadTest::click_sendsTheKeyOnEachLink_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<int>("opmode");
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<QByteArray>("onPort");
    QTest::addColumn<QByteArray>("onAdapter");
    QTest::addColumn<int>("pending");

    const QPoint five(7000, 2000);
    QTest::newRow("RS232") << "RS232" << 0 << five << QByteArray("*5") << QByteArray() << 0;
    QTest::newRow("RS232 key 1") << "RS232" << 0 << QPoint(6000, 3000) << QByteArray("*1")
                                 << QByteArray() << 0;
    QTest::newRow("RS232 E") << "RS232" << 0 << QPoint(8000, 4000) << QByteArray("*E")
                             << QByteArray() << 0;
    QTest::newRow("RS232 is never deferred")
        << "RS232" << 2 << QPoint(6000, 4000) << QByteArray("*.") << QByteArray() << 0;
    QTest::newRow("RS485") << "RS485" << 0 << five << bytes({0x83, 0x11, '5'}) << QByteArray() << 0;
    QTest::newRow("RS485 network") << "RS485" << 2 << five << QByteArray() << QByteArray() << 5;
    QTest::newRow("USB485 polling")
        << "USB485" << 1 << five << QByteArray() << bytes({0x83, 0x11, '5'}) << 0;
    QTest::newRow("USB485 network") << "USB485" << 2 << five << QByteArray() << QByteArray() << 5;
    QTest::newRow("USB network") << "USB" << 2 << five << QByteArray() << QByteArray() << 5;
    QTest::newRow("Ethernet") << "Ethernet" << 0 << five << QByteArray() << QByteArray() << 0;
}

void KeypadTest::click_sendsTheKeyOnEachLink() {
    QFETCH(QString, commtype);
    QFETCH(int, opmode);
    QFETCH(QPoint, at);
    QFETCH(QByteArray, onPort);
    QFETCH(QByteArray, onAdapter);
    QFETCH(int, pending);

    displaytest::ScreenFixture s(commtype);
    s.ftdi.devices = {{"A1", "adapter"}};
    display::Form1& form = s.newForm();
    form.Form_Load();
    // The screen as a running one has it: the port open, the adapter open, scale 131 shown.
    s.port().PortOpen(true);
    s.usb.usb_open();
    s.m.netid[0] = 131;
    s.m.scalecount = 1;
    s.m.commtype = commtype;
    s.m.opmode = static_cast<std::int16_t>(opmode);
    s.port().written.clear();

    form.keypad().vsElastic1_MouseMove(at.x(), at.y());
    form.keypad().vsElastic1_Click();
    QCOMPARE(s.port().written, onPort);
    QCOMPARE(s.adapterBytes(), onAdapter);
    QCOMPARE(s.m.keypending, pending > 0 ? 1 : 0);
    QCOMPARE(s.m.keycode, pending);
    QVERIFY(s.dialogs.said.isEmpty());
}

QTEST_GUILESS_MAIN(KeypadTest)
#include "test_keypad.moc"
