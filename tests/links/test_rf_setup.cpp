// The RF module's channel setup on the kernel backend: with the far end played by the test on
// the virtual clock, the escape and the channel command byte for byte for each channel and how
// many answer bytes are enough within the 2 seconds; against stellwyn-sim's module, the tuned
// module passing requests on.
#include "PtyPair.h"
#include "RecordingDialogs.h"
#include "SimProcess.h"
#include "TempHome.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "links/KernelFtdi.h"
#include "links/RfSetup.h"
#include "links/UsbLink.h"

#include <QTest>

using namespace stellwyn;
using links::DWORD;

namespace {

constexpr int kWireTimeoutMs = 3000;
const QString notResponding = QStringLiteral("message: RF Module Not Responding");

// The adapter of a station, opened on a terminal as device 0.
struct Station {
    explicit Station(const QString& device) {
        settings.saveSetting(QStringLiteral("USB"), QStringLiteral("Devices"), device);
        links::UsbLink(m, ftdi, dialogs).usb_open();
    }
    DWORD queued() {
        DWORD waiting = 0;
        ftdi.FT_GetQueueStatus(m.usbhandle, waiting);
        return waiting;
    }

    testsupport::TempHome home;
    core::SettingsStore settings{home.file(QStringLiteral("stellwyn.ini"))};
    core::Module1 m;
    testsupport::RecordingDialogs dialogs;
    links::KernelFtdi ftdi{settings};
};

} // namespace

class RfSetupTest : public QObject {
    Q_OBJECT
private slots:
    void escapeAndChannel_sentByteForByteOnceAnswered_data();
    void escapeAndChannel_sentByteForByteOnceAnswered();
    void tunedModule_passesRequestsOn();
};

void RfSetupTest::escapeAndChannel_sentByteForByteOnceAnswered_data() {
    QTest::addColumn<QString>("rfnetid");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("command"); // empty: not answered, nothing after the escape
    const QByteArray ok("OK\r");
    for (int channel = 0; channel <= 6; ++channel) {
        const QByteArray n = QByteArray::number(channel);
        QTest::addRow("channel %d", channel)
            << QString::fromLatin1(n) << ok << "ATHP 0" + n + ",CN\r";
    }
    QTest::newRow("7 is no channel") << "7" << ok << QByteArray("ATHP ,CN\r");
    QTest::newRow("empty") << "" << ok << QByteArray("ATHP ,CN\r");
    QTest::newRow("silence") << "5" << QByteArray() << QByteArray();
    QTest::newRow("two bytes, then silence") << "5" << QByteArray("OK") << QByteArray();
    QTest::newRow("three bytes of anything")
        << "5" << QByteArray("x\x00y", 3) << QByteArray("ATHP 05,CN\r");
    QTest::newRow("more than three")
        << "5" << QByteArray("OK\r\nOK\r") << QByteArray("ATHP 05,CN\r");
}

void RfSetupTest::escapeAndChannel_sentByteForByteOnceAnswered() {
    QFETCH(QString, rfnetid);
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, command);
    linkstest::PtyPair pty;
    QVERIFY(pty.ok());
    Station s(pty.slavePath());
    s.m.rfnetid = rfnetid;
    // The answer is on the line before the wait looks: the wait reads only the clock.
    pty.send(answer);
    QTRY_COMPARE_WITH_TIMEOUT(s.queued(), DWORD(answer.size()), kWireTimeoutMs);
    core::VirtualClock clock;

    links::rf_setup(s.m, &s.ftdi, s.dialogs, clock);

    const QByteArray sent = "+++" + command;
    QCOMPARE(pty.receive(sent.size(), kWireTimeoutMs), sent);
    QCOMPARE(pty.receive(1, 20), QByteArray());
    QCOMPARE(s.dialogs.said,
             command.isEmpty() ? (QStringList{"beep", notResponding}) : QStringList{});
    if (command.isEmpty()) {
        QVERIFY(clock.elapsed() >= 2.0 && clock.elapsed() < 2.1);
    } else {
        QCOMPARE(s.queued(), DWORD(0));
    }
}

void RfSetupTest::tunedModule_passesRequestsOn() {
    // The network's scales listen on channel 3.
    linkstest::SimProcess sim({QStringLiteral("--rf"), QStringLiteral("3"), QStringLiteral("--ids"),
                               QStringLiteral("130")});
    QVERIFY2(!sim.slavePath().isEmpty(), qPrintable(sim.errorText()));
    Station s(sim.slavePath());
    QVERIFY(s.m.usbhandle != 0);
    s.m.rfnetid = QStringLiteral("3");
    core::RealClock clock;

    links::rf_setup(s.m, &s.ftdi, s.dialogs, clock);

    QCOMPARE(s.dialogs.said, QStringList{});
    QTRY_COMPARE_WITH_TIMEOUT(sim.received(), QByteArray("+++ATHP 03,CN\r"), kWireTimeoutMs);
    // The module's "OK" to the command is left queued for the scanner.
    QTRY_COMPARE_WITH_TIMEOUT(s.queued(), DWORD(3), kWireTimeoutMs);
    QByteArray stale;
    DWORD n = 0;
    s.ftdi.FT_Read(s.m.usbhandle, stale, 3, n);
    DWORD written = 0;
    s.ftdi.FT_Write(s.m.usbhandle,
                    QByteArray("\x82\x11"
                               "1"),
                    3, written);
    QTRY_VERIFY_WITH_TIMEOUT(s.queued() >= 11, kWireTimeoutMs);
}

QTEST_GUILESS_MAIN(RfSetupTest)
#include "test_rf_setup.moc"
