// The real serial backend on pseudo-terminals: bytes on the wire as written, reads that never
// block or lose a byte, the control's errors, a device that goes away, and why a port is
// refused. The program talking to the simulator over it is the screen's end-to-end test's.
#include "ChildProcess.h"
#include "PtyPair.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "core/AppHome.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "links/SerialLink.h"
#include "links/SerialPort.h"
#include "links/SerialPortFactory.h"

#include <QFile>
#include <QTest>
#include <grp.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace stellwyn;
using linkstest::allByteValues;
using linkstest::PtyPair;

namespace {

constexpr int kWireTimeoutMs = 3000;

struct PortOnPty {
    testsupport::TempHome home;
    core::SettingsStore settings{home.file(QStringLiteral("stellwyn.ini"))};
    std::unique_ptr<links::SerialPort> port = links::makeSerialPort(settings);

    explicit PortOnPty(const QString& com1) {
        settings.saveSetting(QStringLiteral("Ports"), QStringLiteral("COM1"), com1);
    }
    void open() {
        port->CommPort(1);
        port->Settings(QStringLiteral("9600,N,8,1"));
        port->InputLen(0);
        port->PortOpen(true);
    }
};

// Starts RS-232 on COM1 and gives what the operator was told, the status bar's lines last.
QStringList startRs232(PortOnPty& com) {
    core::AppHome home(com.home.path());
    core::Module1 m;
    m.commport = 1;
    m.commsettings = QStringLiteral("9600,N,8,1");
    testsupport::RecordingDialogs dialogs;
    links::SerialLink link(m, *com.port, dialogs, home);
    QStringList status;
    link.showStatus = [&status](const QString& text) {
        status << QStringLiteral("status: ") + text;
    };
    link.rs232_start();
    return dialogs.texts() + status;
}

// The same in a child process that has dropped root for an ordinary user: permissions deny
// root nothing, so only such a process meets a real denial there.
QStringList startRs232AsNobody(PortOnPty& com) {
    const testsupport::ChildRun run = testsupport::runInChild([&com](int fd) {
        const gid_t nobody = 65534;
        if (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0) {
            return 1;
        }
        return testsupport::writeAll(fd, startRs232(com).join(u'\n').toUtf8()) ? 0 : 1;
    });
    if (!run.exited || run.status != 0) {
        return {QStringLiteral("the child could not become another user")};
    }
    return QString::fromUtf8(run.told).split(u'\n');
}

} // namespace

class SerialPty : public QObject {
    Q_OBJECT
private slots:
    void output_reachesTheWireAsWritten_data();
    void output_reachesTheWireAsWritten();
    void input_deliversEveryByteInOrderAcrossReads_data();
    void input_deliversEveryByteInOrderAcrossReads();
    void inputLen_limitsOneRead();
    void control_refusesWhatItCannotDo_data();
    void control_refusesWhatItCannotDo();
    void unpluggedDevice_isSilence();
    void rs232_start_portRefused_saysWhy_data();
    void rs232_start_portRefused_saysWhy();
};

void SerialPty::output_reachesTheWireAsWritten_data() {
    QTest::addColumn<QList<QByteArray>>("outputs");

    QTest::newRow("every byte value, 128 to 255 as single bytes")
        << QList<QByteArray>{allByteValues()};
    QTest::newRow("an addressed request in three assignments")
        << QList<QByteArray>{"\x82", "\x11", "1"};
    QTest::newRow("line ends are not translated") << QList<QByteArray>{"\r\n", "\n", "\r"};
}

void SerialPty::output_reachesTheWireAsWritten() {
    QFETCH(QList<QByteArray>, outputs);
    PtyPair pty;
    QVERIFY(pty.ok());
    PortOnPty com(pty.slavePath());
    com.open();

    QByteArray expected;
    for (const QByteArray& bytes : outputs) {
        com.port->Output(bytes);
        expected += bytes;
    }

    // Nothing ran the event loop: each Output went to the system when it was called.
    QCOMPARE(pty.receive(expected.size(), kWireTimeoutMs), expected);
}

void SerialPty::input_deliversEveryByteInOrderAcrossReads_data() {
    QTest::addColumn<QList<QByteArray>>("pieces");

    QTest::newRow("a reply cell arriving byte by byte")
        << QList<QByteArray>{"\x82", "+", " ", "  12.5", "\r", "\n"};
    QTest::newRow("every byte value in two halves")
        << QList<QByteArray>{allByteValues().left(128), allByteValues().mid(128)};
    QTest::newRow("two cells back to back, then a third") << QList<QByteArray>{
        QByteArray("\x82  00012.5\r\n\x83  00007.0\r\n"), QByteArray("\x84  00001.0\r\n")};
}

void SerialPty::input_deliversEveryByteInOrderAcrossReads() {
    QFETCH(QList<QByteArray>, pieces);
    PtyPair pty;
    QVERIFY(pty.ok());
    PortOnPty com(pty.slavePath());
    com.open();

    QCOMPARE(com.port->InBufferCount(), 0);
    QCOMPARE(com.port->Input(), QByteArray());
    QByteArray got;
    QByteArray sent;
    for (const QByteArray& piece : pieces) {
        pty.send(piece);
        sent += piece;
        QTRY_COMPARE_WITH_TIMEOUT(got.size() + com.port->InBufferCount(), sent.size(),
                                  kWireTimeoutMs);
        got += com.port->Input();
    }
    QCOMPARE(got, sent);
    QCOMPARE(com.port->InBufferCount(), 0);
}

void SerialPty::inputLen_limitsOneRead() {
    PtyPair pty;
    QVERIFY(pty.ok());
    PortOnPty com(pty.slavePath());
    com.open();
    com.port->InputLen(4);

    pty.send("ABCDEFGHIJ");
    QTRY_COMPARE_WITH_TIMEOUT(com.port->InBufferCount(), 10, kWireTimeoutMs);
    QCOMPARE(com.port->Input(), QByteArray("ABCD"));
    com.port->InputLen(0);
    QCOMPARE(com.port->Input(), QByteArray("EFGHIJ"));
}

void SerialPty::control_refusesWhatItCannotDo_data() {
    QTest::addColumn<QString>("step");

    QTest::newRow("output on a closed port") << "output";
    QTest::newRow("count on a closed port") << "count";
    QTest::newRow("input on a closed port") << "input";
    QTest::newRow("port number 0") << "port0";
    QTest::newRow("a settings text the control does not know") << "settings";
    QTest::newRow("opening twice") << "twice";
    QTest::newRow("another port number while open") << "renumber";
}

void SerialPty::control_refusesWhatItCannotDo() {
    QFETCH(QString, step);
    PtyPair pty;
    QVERIFY(pty.ok());
    PortOnPty com(pty.slavePath());
    links::SerialPort& port = *com.port;

    if (step == u"output") {
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.Output("*P"));
        QCOMPARE(pty.receive(1, 100), QByteArray());
    } else if (step == u"count") {
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.InBufferCount());
    } else if (step == u"input") {
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.Input());
    } else if (step == u"port0") {
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.CommPort(0));
    } else if (step == u"settings") {
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError,
                                 port.Settings(QStringLiteral("9600,X,8,1")));
    } else if (step == u"twice") {
        com.open();
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.PortOpen(true));
    } else if (step == u"renumber") {
        com.open();
        QVERIFY_THROWS_EXCEPTION(links::SerialPortError, port.CommPort(2));
    }
}

void SerialPty::unpluggedDevice_isSilence() {
    PtyPair pty;
    QVERIFY(pty.ok());
    PortOnPty com(pty.slavePath());
    com.open();
    pty.send("\x82");
    QTRY_COMPARE_WITH_TIMEOUT(com.port->InBufferCount(), 1, kWireTimeoutMs);
    QCOMPARE(com.port->Input(), QByteArray("\x82"));

    pty.hangUp();

    for (int poll = 0; poll < 3; ++poll) {
        com.port->Output("\x82\x11"
                         "1");
        QCOMPARE(com.port->InBufferCount(), 0);
        QCOMPARE(com.port->Input(), QByteArray());
    }
}

void SerialPty::rs232_start_portRefused_saysWhy_data() {
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("why"); // %1: the device's path

    QTest::newRow("no such device") << "missing"
                                    << "%1 does not exist (";
    QTest::newRow("held by another program") << "busy"
                                             << "%1 is in use by another program (";
    QTest::newRow("the user may not open it")
        << "denied"
        << "%1 may not be opened by this user (Permission denied). Serial devices are for members "
           "of the group dialout: sudo usermod -aG dialout $USER, then log out and in again.";
}

void SerialPty::rs232_start_portRefused_saysWhy() {
    QFETCH(QString, device);
    QFETCH(QString, why);
    PtyPair pty;
    QVERIFY(pty.ok());
    const QString path =
        device == u"missing" ? QStringLiteral("/dev/stellwyn-no-such-port") : pty.slavePath();
    PortOnPty com(path);
    PortOnPty holder(path);
    if (device == u"busy") {
        holder.open();
    }
    QStringList told;
    if (device == u"denied") {
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0), 0);
        told = ::geteuid() == 0 ? startRs232AsNobody(com) : startRs232(com);
    } else {
        told = startRs232(com);
    }

    QCOMPARE(told.size(), 2);
    QCOMPARE(told[0], QStringLiteral("message: The com port you selected either doesn't exist or "
                                     "is already in use"));
    const QString status = QStringLiteral("status: Port COM1 is not available: ") + why.arg(path);
    QVERIFY2(told[1].startsWith(status), qPrintable(told[1]));
    QCOMPARE(told[1].contains(QStringLiteral("dialout")), device == u"denied");
}

QTEST_GUILESS_MAIN(SerialPty)
#include "test_serial_pty.moc"
