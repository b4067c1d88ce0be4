// The Ethernet link of the main screen against stellwyn-sim's socket on 127.0.0.1: the
// activation's connect, handshake and first request, the polling, how replies become
// readings, the server going away and coming back, and an address that resolves to nothing.
#include "ScreenFixture.h"
#include "SimProcess.h"
#include "core/ScaleAddress.h"
#include "core/SettingsStore.h"
#include "links/Ethernet.h"

#include <QTest>

using namespace stellwyn;
using displaytest::ScreenFixture;
using linkstest::SimProcess;

namespace {

constexpr int kNetworkMs = 5000;

SimProcess tcpSim(const QStringList& more, quint16 port = 0) {
    return SimProcess(
        QStringList{QStringLiteral("--no-pty"), QStringLiteral("--tcp"), QString::number(port)} +
        more);
}

void pointAt(ScreenFixture& s, const QString& address) {
    core::SettingsStore settings(s.home.file(QStringLiteral("stellwyn.ini")));
    core::storeScaleAddress(settings, address);
}

display::Form1& activate(ScreenFixture& s) {
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();
    return form;
}

QString shown(ScreenFixture& s) {
    return s.f().Screen.caption.trimmed();
}

} // namespace

class EthernetLinkTest : public QObject {
    Q_OBJECT
private slots:
    void activation_connectsHandshakesAndAsksScale130Once();
    void reply_becomesTheReadingOfItsScale_data();
    void reply_becomesTheReadingOfItsScale();
    void serverGoneAndBack_isToldOnceAndReconnects();
    void unresolvableAddress_isToldWithoutHolding();
};

void EthernetLinkTest::activation_connectsHandshakesAndAsksScale130Once() {
    SimProcess sim =
        tcpSim({"--ids", "130,131", "--set", "weight 130 12.5", "--set", "weight 131 7.5"});
    QVERIFY2(sim.tcpPort() != 0, qPrintable(sim.errorText()));
    ScreenFixture s(QStringLiteral("Ethernet"), QStringLiteral("RS485/131 RS485/130"));
    pointAt(s, QStringLiteral("127.0.0.1:%1").arg(sim.tcpPort()));

    activate(s);

    QCOMPARE(s.f().Combo1.items(), (QStringList{"SCALE RS485 ID#130", "SCALE RS485 ID#131"}));
    QCOMPARE(s.statuses.value(0),
             QStringLiteral("Ethernet: connected to 127.0.0.1:%1.").arg(sim.tcpPort()));
    QTRY_COMPARE_WITH_TIMEOUT(shown(s), QStringLiteral("12.5"), kNetworkMs);
    QCOMPARE(sim.received(), QByteArray("\x82\x11K"));

    // Single scale with polling: Timer4 asks the scale chosen, with "K" only.
    s.f().opt_single.setValue(true);
    s.f().Combo1.setListIndex(1);
    s.f().chk_frame.setValue(1);
    s.f().chk_pollenb.setValue(1);
    s.timers->runFor(0.35);
    QTRY_COMPARE_WITH_TIMEOUT(shown(s), QStringLiteral("7.5"), kNetworkMs);
    QVERIFY(sim.received().startsWith(QByteArray("\x82\x11K\x83\x11K")));
}

void EthernetLinkTest::reply_becomesTheReadingOfItsScale_data() {
    QTest::addColumn<QStringList>("simArgs");
    QTest::addColumn<QString>("reading");
    QTest::addColumn<QString>("row");
    // Unasked replies keep coming after the activation, in network mode, where the scan table
    // follows them.
    QTest::newRow("whole reply") << QStringList{"--set", "weight 130 12.5", "--set",
                                                "stream 130 every 0.1"}
                                 << "12.5"
                                 << "12.5";
    // Each arrival is parsed as it comes: the piece with the address is the reading, the rest
    // has none and is dropped.
    QTest::newRow("split over two arrivals")
        << QStringList{"--set", "weight 130 12.5",       "--set", "stream 130 every 0.2",
                       "--set", "fault 130 split 6 0.05"}
        << "1"
        << "1";
    QTest::newRow("an address in no row")
        << QStringList{"--ids", "140", "--set", "stream 140 every 0.1"} << ""
        << "";
}

void EthernetLinkTest::reply_becomesTheReadingOfItsScale() {
    QFETCH(QStringList, simArgs);
    QFETCH(QString, reading);
    QFETCH(QString, row);
    SimProcess sim = tcpSim(simArgs);
    QVERIFY2(sim.tcpPort() != 0, qPrintable(sim.errorText()));
    ScreenFixture s(QStringLiteral("Ethernet"), QStringLiteral("RS485/130"));
    pointAt(s, QStringLiteral("127.0.0.1:%1").arg(sim.tcpPort()));

    activate(s);
    // Long enough for every piece and a few unasked replies.
    QTest::qWait(700);

    QCOMPARE(shown(s), reading);
    QCOMPARE(s.m.scaleweight[0].trimmed(), reading);
    QCOMPARE(s.f().NetList.text(1, 1).trimmed(), row);
}

void EthernetLinkTest::serverGoneAndBack_isToldOnceAndReconnects() {
    auto sim = std::make_unique<SimProcess>(
        QStringList{"--no-pty", "--tcp", "0", "--set", "weight 130 3.5"});
    const quint16 port = sim->tcpPort();
    QVERIFY2(port != 0, qPrintable(sim->errorText()));
    ScreenFixture s(QStringLiteral("Ethernet"), QStringLiteral("RS485/130"));
    pointAt(s, QStringLiteral("127.0.0.1:%1").arg(port));
    activate(s);
    QTRY_COMPARE_WITH_TIMEOUT(shown(s), QStringLiteral("3.5"), kNetworkMs);

    sim->stop();
    const QString lost = QStringLiteral("Ethernet: the connection to 127.0.0.1:%1 was lost (the "
                                        "scales closed the connection); trying again every 5 "
                                        "seconds.")
                             .arg(port);
    QTRY_COMPARE_WITH_TIMEOUT(s.statuses.size(), 2, kNetworkMs);
    QCOMPARE(s.statuses.at(1), lost);
    // Retries that fail say nothing more.
    for (int i = 0; i < 3; ++i) {
        s.timers->runFor(5.0);
        QTest::qWait(50);
    }
    QCOMPARE(s.statuses.size(), 2);
    QVERIFY(s.form().ethernet()->retryTimer().running());

    sim = std::make_unique<SimProcess>(QStringList{"--no-pty", "--tcp", QString::number(port),
                                                   "--set", "weight 130 4.5", "--set",
                                                   "stream 130 every 0.1"});
    QCOMPARE(sim->tcpPort(), port);
    s.timers->runFor(5.0);
    QTRY_COMPARE_WITH_TIMEOUT(s.statuses.size(), 3, kNetworkMs);
    QCOMPARE(s.statuses.at(2),
             QStringLiteral("Ethernet: connected to 127.0.0.1:%1 again.").arg(port));
    QTRY_COMPARE_WITH_TIMEOUT(shown(s), QStringLiteral("4.5"), kNetworkMs);
    QVERIFY(!s.form().ethernet()->retryTimer().running());
}

void EthernetLinkTest::unresolvableAddress_isToldWithoutHolding() {
    ScreenFixture s(QStringLiteral("Ethernet"), QStringLiteral("RS485/130"));
    pointAt(s, QStringLiteral("no-such-scale.invalid"));

    activate(s);

    // The screen is up with its scales while the lookup goes on.
    QCOMPARE(s.f().Combo1.items(), QStringList{"SCALE RS485 ID#130"});
    QCOMPARE(s.dialogs.said, QStringList{});
    QTRY_COMPARE_WITH_TIMEOUT(
        s.statuses,
        QStringList{"Ethernet: cannot connect to no-such-scale.invalid:2000 (no host "
                    "of that name was found); trying again every 5 seconds."},
        kNetworkMs);
}

QTEST_GUILESS_MAIN(EthernetLinkTest)
#include "test_ethernet_link.moc"
