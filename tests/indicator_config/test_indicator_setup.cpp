// The setup transfers against simulated indicators, on the serial line and behind the
// USB-RS485 adapter: the frames as the indicator receives them and when, what a read makes of
// the reply and of the screen's mode, and the group setup's way through the database.
#include "FakeSerialPort.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/ModeTimers.h"
#include "acquisition/Scanners.h"
#include "core/Clock.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "indicator_config/IndicatorSetup.h"
#include "links/SimFtdi.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"
#include "sim/WireTime.h"

#include <QTest>

using namespace stellwyn;
using indicator_config::IndicatorSetup;

namespace {

// One indicator, 130, on the link of `commtype` ("RS485" gets the adapter's bus but sends
// nothing), listed as the one scale of the screen, and one more on the adapter, 100, whose
// replies carry an address below 128.
struct Setup {
    explicit Setup(const QString& commtype,
                   const QDateTime& startAt = QDateTime(QDate(2026, 1, 5), QTime(12, 0)))
        : clock(startAt), rs232Bus(sim::Bus::Mode::Rs232), line(rs232Bus, clock),
          ftdi({100, 130}, clock), context{m, f, clock, {}, {}}, scanners(context),
          timers(context, scanners), setup(context, timers, dialogs) {
        core::createDatabase(home.path());
        m.dataconn = m.cfgconn = core::connectionText(home.path());
        m.commtype = commtype;
        rs232Bus.add(130);
        serial.attach(line);
        serial.PortOpen(true);
        links::FtHandle handle = 0;
        ftdi.FT_Open(0, handle);
        m.usbhandle = handle;
        context.links = {&serial, &ftdi, nullptr};
        for (sim::Bus* bus : {&rs232Bus, &ftdi.bus()}) {
            bus->setFrameLogger([this](double t, sim::Bus::Direction d, const QByteArray& bytes) {
                if (d == sim::Bus::Direction::Received) {
                    heard(t, bytes);
                }
            });
        }
        m.netid[0] = 130;
        m.scalecount = 1;
        m.curnetid = 130;
        f.Combo1.addItem(QStringLiteral("Scale 130"));
        timers.attach();
        setup.attach();
        f.txt_polltime.text = QStringLiteral(".5");
        f.Combo1.setListIndex(0);
        start = clock.elapsed();
        lineStart = sim::lineSeconds(clock);
    }

    sim::Indicator& indicator(int netId = 130) {
        return m.commtype == u"RS232" ? *rs232Bus.find(130) : *ftdi.bus().find(netId);
    }

    // Bytes the indicator received, gathered by the moment they arrived: "t=<s> <hex>".
    void heard(double t, const QByteArray& bytes) {
        const QString stamp = QStringLiteral("t=%1 ").arg(t - lineStart, 0, 'f', 1);
        if (!frames.isEmpty() && frames.last().startsWith(stamp)) {
            frames.last() += QString::fromLatin1(bytes.toHex());
        } else {
            frames << stamp + QString::fromLatin1(bytes.toHex());
            if (bytes.endsWith('\x11' + QByteArray("G")) || bytes == "*G" || bytes.endsWith('J') ||
                bytes.endsWith('T')) {
                runningAtRequest = anyTimerRunning();
            }
        }
    }

    // The simulated links hand bytes on when next looked at: the last frame of a write that
    // nothing reads after it reaches the indicator here.
    void settle() {
        links::DWORD waiting = 0;
        ftdi.FT_GetQueueStatus(m.usbhandle, waiting);
        serial.InBufferCount();
    }

    bool anyTimerRunning() const {
        bool any = f.Timer2.running() || f.Timer3.running() || f.Timer4.running();
        for (int i = 0; i < core::timer1Count; ++i) {
            any = any || f.Timer1[i].running();
        }
        return any;
    }

    testsupport::TempHome home;
    core::VirtualClock clock;
    core::Module1 m;
    core::Form1Controls f;
    testsupport::RecordingDialogs dialogs;
    sim::Bus rs232Bus;
    sim::InProcessLink line;
    linkstest::FakeSerialPort serial;
    links::SimFtdi ftdi;
    acquisition::AcquisitionContext context;
    acquisition::Scanners scanners;
    acquisition::ModeTimers timers;
    IndicatorSetup setup;
    QStringList frames;
    bool runningAtRequest = true;
    double start = 0;
    double lineStart = 0;
};

QString hex(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

QString at(double t, const QByteArray& bytes) {
    return QStringLiteral("t=%1 ").arg(t, 0, 'f', 1) + hex(bytes);
}

const QByteArray cr("\r");

// Frames on the adapter to NetID 130: a write of one setup item, a request of one code.
QByteArray up(char code) {
    return QByteArray("\x82\x12") + code;
}
QByteArray ask(char code) {
    return QByteArray("\x82\x11") + code;
}

} // namespace

class IndicatorSetupTest : public QObject {
    Q_OBJECT
private slots:
    void writes_putFramesOnTheWire_data();
    void writes_putFramesOnTheWire();
    void reads_resultMessagesAndMode_data();
    void reads_resultMessagesAndMode();
    void groupSetup_travelsScaleToDatabaseAndBack_data();
    void groupSetup_travelsScaleToDatabaseAndBack();
    void groupKey_fromNameOrLink_data();
    void groupKey_fromNameOrLink();
    void resetTotals_clearsThenReads();
    void replyLimit_holdsPastMidnightOnTheNetworkOnly_data();
    void replyLimit_holdsPastMidnightOnTheNetworkOnly();
    void groupValue_refusedWhenTheFrameCannotCarryIt_data();
    void groupValue_refusedWhenTheFrameCannotCarryIt();
};

void IndicatorSetupTest::writes_putFramesOnTheWire_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("frames");
    QTest::addColumn<double>("seconds");

    const QByteArray v1 = "001.5", v2 = "022.0", v3 = "000.0", v4 = "004.5", v5 = "999.9",
                     v6 = "000.0";
    const QByteArray nul(1, '\0');
    QStringList rs232Group = {at(0.0, "!U1" + v1 + v2 + cr), at(0.4, "!U0" + v3 + cr + v4 + cr),
                              at(0.8, "!U9" + v5 + v6 + cr), at(1.2, "!U2" + cr)};
    QStringList usbGroup = {at(0.0, up('1') + v1 + v2 + cr), at(0.4, up('0') + v3 + cr),
                            at(0.8, up('I') + v4 + cr), at(1.2, up('9') + v5 + v6 + cr),
                            at(1.6, up('2') + cr)};
    for (int n = 0; n < 6; ++n) {
        const char code = static_cast<char>('3' + n);
        rs232Group << at(1.6 + 0.4 * n, "!U" + QByteArray(1, code) + nul);
        usbGroup << at(2.0 + 0.4 * n, (up(code) + nul).repeated(4));
    }
    rs232Group << at(5.2, "*S");
    usbGroup << at(5.6, ask('S'));
    QTest::newRow("group, RS232") << "RS232"
                                  << "group" << rs232Group << 6.8;
    QTest::newRow("group, USB485") << "USB485"
                                   << "group" << usbGroup << 7.2;
    QTest::newRow("group, RS485 sends nothing") << "RS485"
                                                << "group" << QStringList{} << 1.6;

    QStringList rs232Oc;
    QStringList usbOc;
    for (int n = 0; n < 8; ++n) {
        const char code = static_cast<char>('A' + n);
        const int slotWrites = n == 7 ? 2 : 6;
        rs232Oc << at(0.4 * n,
                      "!U" + QByteArray(1, code) + cr.repeated(n < 6 ? 1 : slotWrites + 1));
        usbOc << at(0.4 * n, up(code).repeated(slotWrites + 1) + cr);
    }
    rs232Oc << at(4.4, "*S");
    usbOc << at(4.4, ask('S'));
    QTest::newRow("output, RS232") << "RS232"
                                   << "output" << rs232Oc << 6.0;
    QTest::newRow("output, USB485") << "USB485"
                                    << "output" << usbOc << 6.0;
    QTest::newRow("output, USB sends nothing") << "USB"
                                               << "output" << QStringList{} << 1.6;
}

void IndicatorSetupTest::writes_putFramesOnTheWire() {
    QFETCH(QString, commtype);
    QFETCH(QString, operation);
    QFETCH(QStringList, frames);
    QFETCH(double, seconds);

    Setup s(commtype);
    const QStringList values = {"1.5", "22", "", "4.5", "999.9", "0"};
    for (int i = 0; i < values.size(); ++i) {
        QVERIFY(!s.setup.setGroupValue(i, values[i]));
    }
    std::int32_t id = 130;
    const std::int16_t result =
        operation == u"group" ? s.setup.save_screen_to_scale(id) : s.setup.upload_oc(id);
    s.settle();

    QCOMPARE(result, std::int16_t(0));
    QCOMPARE(s.frames, frames);
    QCOMPARE(s.clock.elapsed() - s.start, seconds);
    // A write reads nothing, leaves the pane usable and the timers as they were.
    QVERIFY(s.setup.pane().btn_grp_upload.enabled);
    QVERIFY(!s.dialogs.said.contains(QStringLiteral("message")));
}

void IndicatorSetupTest::reads_resultMessagesAndMode_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("netId");
    QTest::addColumn<bool>("silent");
    QTest::addColumn<int>("result");
    QTest::addColumn<QStringList>("said"); // each a prefix of what was said, in order
    QTest::addColumn<bool>("restored");
    QTest::addColumn<QString>("shown"); // the first value, word or total on the screen

    const QString box = QStringLiteral("message: There is no response from the scale.\\n"
                                       "Please make sure");
    const QString notResponding = QStringLiteral("message: Scale not responding.");
    const QStringList clean = {"busy", "idle"};
    const QStringList rs232Fails = {"busy", "beep", box};
    const QStringList usbFails = {"busy", notResponding, "idle"};

    QTest::newRow("group, RS232") << "RS232"
                                  << "group" << 130 << false << 0 << clean << true << "001.5";
    QTest::newRow("group, RS232, silent: left halted")
        << "RS232"
        << "group" << 130 << true << 1 << rs232Fails << false << "";
    QTest::newRow("group, USB485") << "USB485"
                                   << "group" << 130 << false << 0 << clean << true << "001.5";
    QTest::newRow("group, USB485, silent: cleaned up")
        << "USB485"
        << "group" << 130 << true << 0 << usbFails << true << "";
    QTest::newRow("group, USB485, low address: cleaned up")
        << "USB485"
        << "group" << 100 << false << 0 << clean << true << "";
    QTest::newRow("output, USB485") << "USB485"
                                    << "output" << 130 << false << -1 << clean << true << "100";
    QTest::newRow("output, USB485, low address: left halted")
        << "USB485"
        << "output" << 100 << false << -1 << QStringList{"busy"} << false << "";
    QTest::newRow("output, USB485, silent: cleaned up")
        << "USB485"
        << "output" << 130 << true << -1 << usbFails << true << "";
    QTest::newRow("output, RS232, silent: left halted")
        << "RS232"
        << "output" << 130 << true << -1 << rs232Fails << false << "";
    QTest::newRow("totals, RS232") << "RS232"
                                   << "totals" << 130 << false << 0 << clean << true << "1";
    QTest::newRow("totals, USB485, low address: left halted")
        << "USB485"
        << "totals" << 100 << false << 1 << QStringList{"busy"} << false << "";
}

void IndicatorSetupTest::reads_resultMessagesAndMode() {
    QFETCH(QString, commtype);
    QFETCH(QString, operation);
    QFETCH(int, netId);
    QFETCH(bool, silent);
    QFETCH(int, result);
    QFETCH(QStringList, said);
    QFETCH(bool, restored);
    QFETCH(QString, shown);

    Setup s(commtype);
    if (silent) {
        sim::Fault quiet;
        s.indicator(netId).addFault(quiet);
    }
    if (netId == 100) {
        s.m.netid[0] = 100;
        s.m.curnetid = 100;
    }
    // Polling single mode on the serial line, a network scan on the adapter.
    if (commtype == u"RS232") {
        s.f.opt_single.setValue(true);
        s.f.chk_pollenb.setValue(1);
    } else {
        s.f.opt_network.setValue(true);
    }
    s.dialogs.said.clear();

    std::int32_t id = netId;
    int got = -1;
    QString first;
    if (operation == u"group") {
        got = s.setup.load_screen_from_scale(id);
        first = s.setup.groupValues()[0];
    } else if (operation == u"output") {
        s.setup.move_scale_to_ocscreen(id);
        first = s.setup.outputItems().value(0);
    } else {
        got = s.setup.read_totals();
        first = s.setup.totalsWords().value(0);
    }

    QCOMPARE(got, result);
    QCOMPARE(s.dialogs.said.size(), said.size());
    for (int i = 0; i < said.size(); ++i) {
        QVERIFY2(s.dialogs.said[i].startsWith(said[i]), qPrintable(s.dialogs.said[i]));
    }
    QCOMPARE(first, shown);
    QVERIFY(!s.runningAtRequest);
    QCOMPARE(s.setup.pane().btn_oc_download.enabled, restored);
    if (!restored) {
        QVERIFY(!s.anyTimerRunning());
        QVERIFY(s.f.opt_single.value());
    } else if (commtype == u"RS232") {
        QVERIFY(s.f.opt_single.value());
        QCOMPARE(s.f.chk_pollenb.value(), 1);
        QVERIFY(s.f.Timer2.running() && s.f.Timer4.running());
    } else {
        QVERIFY(s.f.opt_network.value());
        QVERIFY(s.f.Timer1[0].running());
    }
}

void IndicatorSetupTest::groupSetup_travelsScaleToDatabaseAndBack_data() {
    QTest::addColumn<QString>("commtype");
    QTest::newRow("RS232") << "RS232";
    QTest::newRow("USB485") << "USB485";
}

void IndicatorSetupTest::groupSetup_travelsScaleToDatabaseAndBack() {
    QFETCH(QString, commtype);
    Setup s(commtype);
    QStringList words = s.indicator().groupWords();
    for (int i = 0; i < 6; ++i) {
        words[31 + i] = QStringLiteral("%1.%2").arg(100 + 11 * i).arg(i);
    }
    s.indicator().setGroupWords(words);

    // Downloaded and stored, as a command's DLG does, then a fresh screen, loaded and uploaded.
    std::int32_t id = 130;
    QCOMPARE(s.setup.load_screen_from_db(QStringLiteral("130")), std::int16_t(1));
    QCOMPARE(s.setup.load_screen_from_scale(id), std::int16_t(0));
    QCOMPARE(s.setup.save_screen_to_db(QStringLiteral("130")), std::int16_t(0));
    Setup fresh(commtype);
    fresh.m.dataconn = s.m.dataconn;
    // On the serial line every name is the one scale's record.
    QCOMPARE(fresh.setup.load_screen_from_db(QStringLiteral("131")),
             std::int16_t(commtype == u"RS232" ? 0 : 2));
    QCOMPARE(fresh.setup.load_screen_from_db(QStringLiteral("130")), std::int16_t(0));
    QCOMPARE(fresh.setup.save_screen_to_scale(id), std::int16_t(0));
    fresh.settle();

    QCOMPARE(fresh.frames.first(),
             at(0.0, (commtype == u"RS232" ? QByteArray("!U1") : up('1')) + "100.0111.1" + cr));
    QCOMPARE(fresh.indicator().groupWords().mid(31, 6), words.mid(31, 6));
    QCOMPARE(fresh.setup.pane().frame.caption,
             commtype == u"RS232" ? QStringLiteral("Database Group Setup for  Scale 130")
                                  : QStringLiteral("Database Group Setup for  Scale #130"));
}

void IndicatorSetupTest::groupKey_fromNameOrLink_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("idnum"); // -1: the name is no number, a fatal error
    QTest::newRow("Scale #7") << "USB485"
                              << "Scale #7" << 7;
    QTest::newRow("7") << "USB485"
                       << " 7 " << 7;
    QTest::newRow("RS232 is always 0") << "RS232"
                                       << "Scale #7" << 0;
    QTest::newRow("no number") << "USB485"
                               << "Scale seven" << -1;
    QTest::newRow("beyond 16 bits") << "USB485"
                                    << "40000" << -1;
}

void IndicatorSetupTest::groupKey_fromNameOrLink() {
    QFETCH(QString, commtype);
    QFETCH(QString, name);
    QFETCH(int, idnum);
    Setup s(commtype);
    if (idnum < 0) {
        QVERIFY_THROWS_EXCEPTION(core::FatalError, s.setup.save_screen_to_db(name));
    } else {
        QCOMPARE(s.setup.save_screen_to_db(name), std::int16_t(0));
        // Stored again under the same key: still one row.
        QCOMPARE(s.setup.save_screen_to_db(name), std::int16_t(0));
    }
    core::Connection connection = core::Connection::open(s.m.dataconn);
    QSqlQuery rows = connection.run(QStringLiteral("select IDnum, description from groups"));
    QStringList stored;
    while (rows.next()) {
        stored << rows.value(0).toString() + u'|' + rows.value(1).toString();
    }
    QCOMPARE(stored,
             idnum < 0 ? QStringList{} : QStringList{QStringLiteral("%1|Scale 130").arg(idnum)});
}

void IndicatorSetupTest::resetTotals_clearsThenReads() {
    Setup s(QStringLiteral("USB485"));
    s.f.opt_network.setValue(true);
    s.dialogs.answers = {true};
    s.setup.reset_totals();

    // The clear, then 2.4 seconds for the indicator and the read's own 1.2 seconds.
    QCOMPARE(s.frames, (QStringList{at(0.0, ask('R')), at(3.6, ask('T'))}));
    QCOMPARE(s.setup.totalsWords().value(0), QStringLiteral("0"));
    QCOMPARE(s.setup.pane().frame.caption, QStringLiteral("Group Totals - Scale 130"));
    QVERIFY(s.f.Timer1[0].running());
}

void IndicatorSetupTest::replyLimit_holdsPastMidnightOnTheNetworkOnly_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<double>("seconds"); // from the request to the end of the wait
    // Started at 23:59:57, the 5 seconds would run across midnight: the network read first
    // holds the three seconds to midnight, the serial read has no such guard.
    QTest::newRow("USB485") << "USB485" << 8.0;
    QTest::newRow("RS232") << "RS232" << 5.0;
}

void IndicatorSetupTest::replyLimit_holdsPastMidnightOnTheNetworkOnly() {
    QFETCH(QString, commtype);
    QFETCH(double, seconds);
    // The three delays before the request take 1.2 seconds.
    Setup s(commtype, QDateTime(QDate(2026, 1, 5), QTime(23, 59, 55, 800)));
    s.indicator().addFault(sim::Fault{});
    std::int32_t id = 130;
    s.setup.load_screen_from_scale(id);
    QVERIFY(qAbs(s.clock.elapsed() - s.start - 1.2 - seconds) < 0.02);
}

void IndicatorSetupTest::groupValue_refusedWhenTheFrameCannotCarryIt_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QString>("frame");
    QTest::newRow("empty goes out as 0") << "" << true << "000.0";
    QTest::newRow("largest") << "999.9" << true << "999.9";
    QTest::newRow("rounded to a tenth") << "12.04" << true << "012.0";
    QTest::newRow("too large") << "1000" << false << "";
    QTest::newRow("negative") << "-1" << false << "";
    QTest::newRow("no number") << "abc" << false << "";
}

void IndicatorSetupTest::groupValue_refusedWhenTheFrameCannotCarryIt() {
    QFETCH(QString, text);
    QFETCH(bool, taken);
    QFETCH(QString, frame);
    Setup s(QStringLiteral("USB485"));
    QVERIFY(!s.setup.setGroupValue(2, QStringLiteral("5")));
    QCOMPARE(!s.setup.setGroupValue(2, text).has_value(), taken);
    QCOMPARE(IndicatorSetup::groupFrameValue(s.setup.groupValues()[2]),
             taken ? frame : QStringLiteral("005.0"));
}

QTEST_GUILESS_MAIN(IndicatorSetupTest)
#include "test_indicator_setup.moc"
