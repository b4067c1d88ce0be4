// The RF module's channel setup on the kernel backend: against stellwyn-sim's module on a
// pseudo-terminal, the escape and the channel command byte for byte for each channel, and the
// tuned module passing requests on; with the far end played by the test on the virtual clock,
// how many answer bytes are enough within the 2 seconds.
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
    void channel_sentByteForByteAndTunesTheModule_data();
    void channel_sentByteForByteAndTunesTheModule();
    void answer_needsThreeBytesWithinTwoSeconds_data();
    void answer_needsThreeBytesWithinTwoSeconds();
};

void RfSetupTest::channel_sentByteForByteAndTunesTheModule_data() {
    QTest::addColumn<QString>("rfnetid");
    QTest::addColumn<QByteArray>("command");
    for (int channel = 0; channel <= 6; ++channel) {
        const QByteArray n = QByteArray::number(channel);
        QTest::newRow(n.constData()) << QString::fromLatin1(n) << "ATHP 0" + n + ",CN\r";
    }
    QTest::newRow("7 is no channel") << "7" << QByteArray("ATHP ,CN\r");
    QTest::newRow("empty") << "" << QByteArray("ATHP ,CN\r");
}

void RfSetupTest::channel_sentByteForByteAndTunesTheModule() {
    QFETCH(QString, rfnetid);
    QFETCH(QByteArray, command);
    // The network's scales listen on channel 3.
    linkstest::SimProcess sim({QStringLiteral("--rf"), QStringLiteral("3"), QStringLiteral("--ids"),
                               QStringLiteral("130")});
    QVERIFY2(!sim.slavePath().isEmpty(), qPrintable(sim.errorText()));
    Station s(sim.slavePath());
    QVERIFY(s.m.usbhandle != 0);
    s.m.rfnetid = rfnetid;
    core::RealClock clock;

    links::rf_setup(s.m, &s.ftdi, s.dialogs, clock);

    QCOMPARE(s.dialogs.said, QStringList{});
    QTRY_COMPARE_WITH_TIMEOUT(sim.received(), "+++" + command, kWireTimeoutMs);
    // The module's "OK" to the command is left queued for the scanner.
    QTRY_COMPARE_WITH_TIMEOUT(s.queued(), DWORD(3), kWireTimeoutMs);
    if (rfnetid == u"3") {
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
}

void RfSetupTest::answer_needsThreeBytesWithinTwoSeconds_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("enough");
    QTest::newRow("silence") << QByteArray() << false;
    QTest::newRow("two bytes, then silence") << QByteArray("OK") << false;
    QTest::newRow("three bytes of anything") << QByteArray("x\x00y", 3) << true;
    QTest::newRow("more than three") << QByteArray("OK\r\nOK\r") << true;
}

void RfSetupTest::answer_needsThreeBytesWithinTwoSeconds() {
    QFETCH(QByteArray, answer);
    QFETCH(bool, enough);
    linkstest::PtyPair pty;
    QVERIFY(pty.ok());
    Station s(pty.slavePath());
    s.m.rfnetid = QStringLiteral("5");
    // The answer is on the line before the wait looks: the wait reads only the clock.
    pty.send(answer);
    QTRY_COMPARE_WITH_TIMEOUT(s.queued(), DWORD(answer.size()), kWireTimeoutMs);
    core::VirtualClock clock;

    links::rf_setup(s.m, &s.ftdi, s.dialogs, clock);

    const QByteArray command("ATHP 05,CN\r");
    QCOMPARE(pty.receive(3 + (enough ? command.size() : 0) + 1, 200),
             enough ? "+++" + command : QByteArray("+++"));
    QCOMPARE(s.dialogs.said, enough ? QStringList{} : (QStringList{"beep", notResponding}));
    if (enough) {
        QCOMPARE(s.queued(), DWORD(0));
    } else {
        QVERIFY(clock.elapsed() >= 2.0 && clock.elapsed() < 2.1);
    }
}

QTEST_GUILESS_MAIN(RfSetupTest)
#include "test_rf_setup.moc"
