// The operating modes and the timers: what each link and mode sends, in order; the Timer1
// chain and its guard; the halt and the restore of a mode around a transfer.
#include "Bytes.h"
#include "FakeSerialPort.h"
#include "RecordingDialogs.h"
#include "ScriptedFtdi.h"
#include "VirtualTimers.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/ModeTimers.h"
#include "acquisition/ReplyWait.h"
#include "acquisition/Scanners.h"
#include "core/Clock.h"
#include "core/Delays.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "links/UsbLink.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"

#include <QTest>

using namespace stellwyn;
using acquisition::ModeTimers;
using testsupport::bytes;

namespace {

// A screen with two scales, 130 and 131, on every link at once; each test picks its commtype.
struct Screen {
    Screen()
        : context{m, f, clock, {}, {}}, usb(m, ftdi, dialogs), scanners(context),
          timers(context, scanners) {
        port.PortOpen(true);
        ftdi.devices = {{"A1", "adapter"}, {"B2", "scale b"}, {"C3", "scale c"}};
        links::FtHandle h = 0;
        ftdi.FT_Open(0, h);
        m.usbhandle = h;
        ftdi.FT_Open(1, usbScaleA);
        ftdi.FT_Open(2, usbScaleB);
        context.links = {&port, &ftdi, &usb};
        m.netid[0] = 130;
        m.netid[1] = 131;
        m.scalecount = 2;
        m.netdeltime = 0.01;
        f.Combo1.addItem(QStringLiteral("SCALE 130"));
        f.Combo1.addItem(QStringLiteral("SCALE 131"));
        f.txt_polltime.text = QStringLiteral(".5");
        timers.attach();
    }

    void useLink(const QString& commtype) {
        m.commtype = commtype;
        if (commtype == u"USB") {
            m.netid[0] = usbScaleA;
            m.netid[1] = usbScaleB;
        }
    }

    QByteArray adapterBytes() { return ftdi.written.value(m.usbhandle); }

    core::VirtualClock clock;
    core::Module1 m;
    core::Form1Controls f;
    acquisition::AcquisitionContext context;
    testsupport::RecordingDialogs dialogs;
    linkstest::FakeSerialPort port;
    linkstest::ScriptedFtdi ftdi;
    links::UsbLink usb;
    links::FtHandle usbScaleA = 0;
    links::FtHandle usbScaleB = 0;
    acquisition::Scanners scanners;
    ModeTimers timers;
};

} // namespace

class ModeTimersTest : public QObject {
    Q_OBJECT
private slots:
    void timer4_sendsTheReadingRequestOfEachLink_data();
    void timer4_sendsTheReadingRequestOfEachLink();
    void timer1_passAsksEveryScaleInOrder_data();
    void timer1_passAsksEveryScaleInOrder();
    void timer1_tickTurnedAwayByGuard_keepsIndex();
    void timer1_chainArmsTheNextElementAndWraps();
    void timer1_pendingKeyGoesOutBeforeThePass_data();
    void timer1_pendingKeyGoesOutBeforeThePass();
    void networkClick_armsTimer1AndWritesCaption();
    void pollTime_notANumber_isFatal();
    void halttimers_stopsEveryTimerButLeavesThemEnabled();
    void netStatPut_restartsTheSavedMode_data();
    void netStatPut_restartsTheSavedMode();
    void timer2AndTimer4_meetAtAYield();
    void waits_keepTheirLengthWhenTheWallClockIsSet_data();
    void waits_keepTheirLengthWhenTheWallClockIsSet();
    void usb485Pass_noTickRunsInTheGapBeforeAWrite();
};

void ModeTimersTest::timer4_sendsTheReadingRequestOfEachLink_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<bool>("frame");
    QTest::addColumn<QByteArray>("onPort");
    QTest::addColumn<QByteArray>("onAdapter");
    QTest::addColumn<QByteArray>("onScaleB");

    QTest::newRow("RS232") << "RS232" << false << QByteArray("*P") << QByteArray() << QByteArray();
    QTest::newRow("RS232 framed") << "RS232" << true << QByteArray("*F") << QByteArray()
                                  << QByteArray();
    QTest::newRow("RS485") << "RS485" << false << bytes({0x83, 0x11, '1'}) << QByteArray()
                           << QByteArray();
    QTest::newRow("USB485") << "USB485" << false << QByteArray() << bytes({0x83, 0x11, '1'})
                            << QByteArray();
    QTest::newRow("USB framed") << "USB" << true << QByteArray() << QByteArray()
                                << QByteArray("*F");
}

void ModeTimersTest::timer4_sendsTheReadingRequestOfEachLink() {
    QFETCH(QString, commtype);
    QFETCH(bool, frame);
    QFETCH(QByteArray, onPort);
    QFETCH(QByteArray, onAdapter);
    QFETCH(QByteArray, onScaleB);

    Screen s;
    s.useLink(commtype);
    s.f.chk_frame.setValue(frame ? 1 : 0);
    s.f.Combo1.setListIndex(1);
    s.timers.Timer4_Timer();

    QCOMPARE(s.port.written, onPort);
    QCOMPARE(s.adapterBytes(), onAdapter);
    QCOMPARE(s.ftdi.written.value(s.usbScaleB), onScaleB);
}

void ModeTimersTest::timer1_passAsksEveryScaleInOrder_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<bool>("frame");
    QTest::addColumn<QByteArray>("onPort");
    QTest::addColumn<QByteArray>("onAdapter");

    QTest::newRow("RS485") << "RS485" << false << bytes({0x82, 0x11, '1', 0x83, 0x11, '1'})
                           << QByteArray();
    QTest::newRow("USB485") << "USB485" << false << QByteArray()
                            << bytes({0x82, 0x11, '1', 0x83, 0x11, '1'});
    QTest::newRow("USB485 framed")
        << "USB485" << true << QByteArray() << bytes({0x82, 0x11, 'F', 0x83, 0x11, 'F'});
    QTest::newRow("RS232 asks its one scale")
        << "RS232" << false << QByteArray("*P") << QByteArray();
}

void ModeTimersTest::timer1_passAsksEveryScaleInOrder() {
    QFETCH(QString, commtype);
    QFETCH(bool, frame);
    QFETCH(QByteArray, onPort);
    QFETCH(QByteArray, onAdapter);

    Screen s;
    s.useLink(commtype);
    s.f.chk_frame.setValue(frame ? 1 : 0);
    s.timers.Timer1_Timer(0);
    QCOMPARE(s.port.written, onPort);
    QCOMPARE(s.adapterBytes(), onAdapter);
    QCOMPARE(s.m.timerguard, 0);
    QCOMPARE(s.m.keybusy, 0);
    if (commtype == u"USB485") {
        // The whole request goes in one write, and only after the gap between scales.
        QVERIFY(s.ftdi.calls.filter(QStringLiteral("FT_Write h1 82 11")).size() == 1);
    }
}

void ModeTimersTest::timer1_tickTurnedAwayByGuard_keepsIndex() {
    Screen s;
    s.useLink(QStringLiteral("RS485"));
    s.m.timerguard = 1;
    s.m.timer1index = 4;
    s.f.Timer1[4].setInterval(500);
    s.f.Timer1[4].setEnabled(true);
    s.timers.Timer1_Timer(4);
    QCOMPARE(s.m.timer1index, 4);
    QVERIFY(s.f.Timer1[4].running());
    QVERIFY(!s.f.Timer1[5].enabled());
    QVERIFY(s.port.written.isEmpty());
}

void ModeTimersTest::timer1_chainArmsTheNextElementAndWraps() {
    Screen s;
    s.useLink(QStringLiteral("RS232"));
    s.f.txt_polltime.text = QStringLiteral(" 1.25 ");
    s.m.timer1index = 9;
    s.f.Timer1[9].setEnabled(true);
    s.timers.Timer1_Timer(9);
    QCOMPARE(s.m.timer1index, 0);
    QVERIFY(!s.f.Timer1[9].enabled());
    QVERIFY(s.f.Timer1[0].enabled());
    QCOMPARE(s.f.Timer1[0].interval(), 1250);
}

void ModeTimersTest::timer1_pendingKeyGoesOutBeforeThePass_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<int>("keycode");
    QTest::addColumn<QByteArray>("sent");

    QTest::newRow("RS485 key 5") << "RS485" << 5
                                 << bytes({0x83, 0x11, '5', 0x82, 0x11, '1', 0x83, 0x11, '1'});
    QTest::newRow("RS485 key 1 sends no key")
        << "RS485" << 1 << bytes({0x83, 0x11, 0x82, 0x11, '1', 0x83, 0x11, '1'});
    QTest::newRow("USB485 decimal point")
        << "USB485" << 10 << bytes({0x83, 0x11, '.', 0x82, 0x11, '1', 0x83, 0x11, '1'});
    QTest::newRow("USB485 enter") << "USB485" << 11
                                  << bytes({0x83, 0x11, 'E', 0x82, 0x11, '1', 0x83, 0x11, '1'});
    QTest::newRow("USB485 code 12 sends no key")
        << "USB485" << 12 << bytes({0x83, 0x11, 0x82, 0x11, '1', 0x83, 0x11, '1'});
}

void ModeTimersTest::timer1_pendingKeyGoesOutBeforeThePass() {
    QFETCH(QString, commtype);
    QFETCH(int, keycode);
    QFETCH(QByteArray, sent);

    Screen s;
    s.useLink(commtype);
    s.m.curscale = 1;
    s.m.keypending = 1;
    s.m.keycode = static_cast<std::int16_t>(keycode);
    s.timers.Timer1_Timer(0);
    QCOMPARE(commtype == u"RS485" ? s.port.written : s.adapterBytes(), sent);
    QCOMPARE(s.m.keypending, 0);
    QCOMPARE(s.m.keycode, 0);
}

void ModeTimersTest::networkClick_armsTimer1AndWritesCaption() {
    Screen s;
    s.useLink(QStringLiteral("RS232"));
    s.f.txt_polltime.text = QStringLiteral(".33");
    s.f.opt_network.setValue(true);
    QVERIFY(s.f.Timer1[0].running());
    QCOMPARE(s.f.Timer1[0].interval(), 330);
    QCOMPARE(s.m.networkmode, 1);
    // One scale on a line has no network to scan: the mode stays single.
    QCOMPARE(s.m.opmode, 0);
    QCOMPARE(s.f.caption, QStringLiteral("RS232 - Network (Multi User) Mode (running .33 sec)"));
    QVERIFY(!s.f.chk_pollenb.enabled);

    s.f.opt_single.setValue(true);
    QVERIFY(!s.f.Timer1[0].enabled());
    QCOMPARE(s.m.networkmode, 0);
    QCOMPARE(s.f.caption, QStringLiteral("RS232 - Single Scale Mode"));
    QVERIFY(s.f.chk_pollenb.enabled);
}

void ModeTimersTest::pollTime_notANumber_isFatal() {
    Screen s;
    s.useLink(QStringLiteral("USB485"));
    s.f.txt_polltime.text = QStringLiteral("fast");
    QVERIFY_THROWS_EXCEPTION(core::FatalError, s.f.opt_network.setValue(true));
    s.f.txt_polltime.text = QStringLiteral("70");
    QVERIFY_THROWS_EXCEPTION(core::FatalError, s.timers.pollInterval());
}

void ModeTimersTest::halttimers_stopsEveryTimerButLeavesThemEnabled() {
    Screen s;
    s.useLink(QStringLiteral("USB485"));
    s.f.Combo1.setListIndex(0);
    s.f.chk_pollenb.setValue(1);
    QVERIFY(s.f.Timer4.running());
    s.timers.halttimers();
    QVERIFY(s.f.Timer2.enabled());
    QVERIFY(s.f.Timer4.enabled());
    QVERIFY(!s.f.Timer2.running());
    QVERIFY(!s.f.Timer4.running());
}

void ModeTimersTest::netStatPut_restartsTheSavedMode_data() {
    QTest::addColumn<QString>("mode");
    QTest::newRow("plain single") << "single";
    QTest::newRow("single with polling") << "poll";
    QTest::newRow("network") << "network";
}

void ModeTimersTest::netStatPut_restartsTheSavedMode() {
    QFETCH(QString, mode);
    Screen s;
    s.useLink(QStringLiteral("USB485"));
    s.f.Combo1.setListIndex(0);
    if (mode == u"network") {
        s.f.opt_network.setValue(true);
    } else {
        s.f.opt_single.setValue(true);
        s.f.chk_pollenb.setValue(mode == u"poll" ? 1 : 0);
    }

    // A transfer: keep the mode, force plain single, halt everything.
    s.timers.net_stat_get();
    s.f.opt_single.setValue(true);
    s.f.chk_pollenb.setValue(0);
    s.timers.halttimers();
    QVERIFY(!s.f.Timer2.running());

    s.timers.net_stat_put();
    if (mode == u"network") {
        QVERIFY(s.f.Timer1[0].running());
        QVERIFY(!s.f.Timer2.running());
        QCOMPARE(s.m.opmode, 2);
    } else {
        QVERIFY(s.f.Timer2.running());
        QCOMPARE(s.f.Timer2.interval(), 250);
        QCOMPARE(s.f.Timer4.running(), mode == u"poll");
        QCOMPARE(s.m.opmode, mode == u"poll" ? 1 : 0);
    }
}

void ModeTimersTest::timer2AndTimer4_meetAtAYield() {
    Screen s;
    sim::Bus bus(sim::Bus::Mode::Addressed);
    bus.add(131).weight().setFixedText(QByteArray(" 42.50"));
    sim::InProcessLink line(bus, s.clock);
    s.port.attach(line);
    s.useLink(QStringLiteral("RS485"));
    testsupport::VirtualTimers timers(s.clock);
    timers.drive(s.f.Timer2);
    timers.drive(s.f.Timer4);

    s.f.Combo1.setListIndex(1);
    s.f.chk_pollenb.setValue(1);
    timers.runFor(0.6);

    // The request of Timer4 went out while Timer2's scanner waited, and that wait took the reply.
    QCOMPARE(s.port.written, bytes({0x83, 0x11, '1'}));
    QCOMPARE(s.m.scaleweight[1].right(6), QStringLiteral(" 42.50"));
}

enum class Wait { Shortdelay, ReplyWait, Usb485Gap };
Q_DECLARE_METATYPE(Wait)

void ModeTimersTest::waits_keepTheirLengthWhenTheWallClockIsSet_data() {
    QTest::addColumn<Wait>("wait");
    QTest::addColumn<QTime>("start");
    QTest::addColumn<int>("shift");
    QTest::addColumn<double>("length");

    const QTime noon(12, 0);
    for (const int shift : {-3600, 3600}) {
        const char* way = shift < 0 ? "set back" : "set forward";
        QTest::addRow("shortdelay, clock %s", way) << Wait::Shortdelay << noon << shift << 0.4;
        QTest::addRow("reply wait, clock %s", way) << Wait::ReplyWait << noon << shift << 0.25;
        // A silent scale: the gap of 0.5 s, then its quarter second of reply wait.
        QTest::addRow("netdeltime and reply wait of a pass, clock %s", way)
            << Wait::Usb485Gap << noon << shift << 0.75;
    }
    // The midnight hold lasts as long as midnight was away, not the hour the clock went back.
    QTest::newRow("midnight hold, clock set back")
        << Wait::Shortdelay << QTime(23, 59, 59) << -3600 << 1.4;
}

void ModeTimersTest::waits_keepTheirLengthWhenTheWallClockIsSet() {
    QFETCH(Wait, wait);
    QFETCH(QTime, start);
    QFETCH(int, shift);
    QFETCH(double, length);

    Screen s;
    s.clock.setNow(QDateTime(QDate(2026, 3, 28), start));
    // The wall clock jumps a tenth of a second into the wait.
    bool shifted = false;
    s.clock.addAdvanceListener([&] {
        if (!shifted && s.clock.elapsed() >= 0.1) {
            shifted = true;
            s.clock.setNow(s.clock.now().addSecs(shift));
        }
    });
    switch (wait) {
    case Wait::Shortdelay:
        core::shortdelay(s.clock);
        break;
    case Wait::ReplyWait: {
        acquisition::ReplyWait reply(s.clock, false);
        while (!reply.over()) {
            reply.yield();
        }
        break;
    }
    case Wait::Usb485Gap:
        s.useLink(QStringLiteral("USB485"));
        s.m.scalecount = 1;
        s.m.netdeltime = 0.5;
        s.timers.Timer1_Timer(0);
        QCOMPARE(s.adapterBytes(), bytes({0x82, 0x11, '1'}));
        break;
    }
    QVERIFY(shifted);
    // A few milliseconds of yields on top, never the hour the clock moved by.
    QVERIFY2(s.clock.elapsed() >= length && s.clock.elapsed() < length + 0.02,
             qPrintable(QString::number(s.clock.elapsed())));
}

void ModeTimersTest::usb485Pass_noTickRunsInTheGapBeforeAWrite() {
    Screen s;
    s.useLink(QStringLiteral("USB485"));
    s.m.netdeltime = 0.05;
    testsupport::VirtualTimers timers(s.clock);
    // A probe that would tick at every millisecond it is let; its ticks join the call log.
    core::Timer probe;
    probe.setInterval(1);
    probe.setEnabled(true);
    probe.Tick = [&] { s.ftdi.calls << QStringLiteral("tick %1").arg(s.clock.elapsed()); };
    timers.drive(probe);

    s.timers.Timer1_Timer(0);

    QCOMPARE(s.adapterBytes(), bytes({0x82, 0x11, '1', 0x83, 0x11, '1'}));
    // Across each write the probe falls silent for the whole gap: the gap neither yields nor
    // lets the request go out early.
    double lastTick = 0;
    std::optional<double> writeAfter;
    int writes = 0;
    for (const QString& call : s.ftdi.calls) {
        if (call.startsWith(u"tick ")) {
            const double at = call.mid(5).toDouble();
            if (writeAfter) {
                QVERIFY2(at - *writeAfter > 0.05 - 1e-4, qPrintable(call));
                writeAfter.reset();
            }
            lastTick = at;
        } else if (call.startsWith(u"FT_Write")) {
            ++writes;
            writeAfter = lastTick;
        }
    }
    QCOMPARE(writes, 2);
    QVERIFY(!writeAfter);
}

QTEST_GUILESS_MAIN(ModeTimersTest)
#include "test_mode_timers.moc"
