// The transports that face other processes: a real pseudo-terminal in raw mode and the
// stellwyn-sim program itself. These wait on real I/O, never on a sleep. The TCP socket is met
// by the main screen's Ethernet test, through the program's own link.
#include "TempHome.h"
#include "core/Clock.h"
#include "sim/Bus.h"
#include "sim/KlDatWriter.h"
#include "sim/PtyServer.h"

#include <QFileInfo>
#include <QProcess>
#include <QTest>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

using namespace stellwyn;
using sim::Bus;

namespace {

constexpr int kWaitMs = 5000;

// The client's end of the pseudo-terminal, opened as a program opens a serial port.
class RawTerminal {
public:
    explicit RawTerminal(const QString& path) {
        fd_ = ::open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (fd_ >= 0) {
            termios tio{};
            tcgetattr(fd_, &tio);
            cfmakeraw(&tio);
            tcsetattr(fd_, TCSANOW, &tio);
        }
    }
    ~RawTerminal() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    bool write(const QByteArray& bytes) {
        return ::write(fd_, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    }
    // Reads until `count` bytes have come or the time is up, running events meanwhile so that
    // a server in this process can answer.
    QByteArray readBytes(qsizetype count) {
        QByteArray got;
        (void)QTest::qWaitFor(
            [&] {
                char buf[256];
                const ssize_t n = ::read(fd_, buf, sizeof buf);
                if (n > 0) {
                    got.append(buf, static_cast<qsizetype>(n));
                }
                return got.size() >= count;
            },
            kWaitMs);
        return got;
    }

private:
    int fd_ = -1;
};

QString simProgram() {
    return qEnvironmentVariable("STELLWYN_BIN_DIR") + QStringLiteral("/stellwyn-sim");
}

} // namespace

class TransportsTest : public QObject {
    Q_OBJECT
private slots:
    void pty_roundTripsThroughARawTerminal_data();
    void pty_roundTripsThroughARawTerminal();
    void pty_survivesTheClientClosingAndReopening();
    void program_printsItsPathServesAndStopsOnTerm();
    void program_writesKlDat();
    void program_refusesBadOptions_data();
    void program_refusesBadOptions();
};

void TransportsTest::pty_roundTripsThroughARawTerminal_data() {
    QTest::addColumn<bool>("rs232");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("reply");
    // CR, LF, a NUL and bytes above 127 must all cross unchanged.
    QTest::newRow("addressed") << false
                               << QByteArray("\x82\x11"
                                             "1",
                                             3)
                               << QByteArray("\x82  ") + "  12.5\r\n";
    QTest::newRow("rs232") << true << QByteArray("*P") << QByteArray("  12.5\r\n");
}

void TransportsTest::pty_roundTripsThroughARawTerminal() {
    QFETCH(bool, rs232);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, reply);
    core::RealClock clock;
    Bus bus(rs232 ? Bus::Mode::Rs232 : Bus::Mode::Addressed);
    bus.add(130).weight().set(12.5, 0.0);
    sim::PtyServer server(bus, clock);
    QVERIFY2(server.open(), qPrintable(server.errorString()));

    RawTerminal port(server.slavePath());
    QVERIFY(port.isOpen());
    QVERIFY(port.write(request));
    QCOMPARE(port.readBytes(reply.size()), reply);
    // An upload with a NUL payload crosses the terminal unchanged.
    const QByteArray upload = rs232 ? QByteArray("!U3\0", 4)
                                    : QByteArray("\x82\x12"
                                                 "3\0",
                                                 4);
    QVERIFY(port.write(upload + request));
    QCOMPARE(port.readBytes(reply.size()), reply);
    QCOMPARE(bus.find(130)->uploads().size(), 1);
    QCOMPARE(bus.find(130)->uploads().front().payload, QByteArray(1, '\0'));
}

void TransportsTest::pty_survivesTheClientClosingAndReopening() {
    core::RealClock clock;
    Bus bus(Bus::Mode::Addressed);
    bus.add(131).weight().set(3.0, 0.0);
    sim::PtyServer server(bus, clock);
    QVERIFY(server.open());
    const QByteArray poll("\x83\x11"
                          "F",
                          3);
    const QByteArray reply = QByteArray("\x83  ") + "   3.0\r\n";
    for (int round = 0; round < 2; ++round) {
        RawTerminal port(server.slavePath());
        QVERIFY(port.write(poll));
        QCOMPARE(port.readBytes(reply.size()), reply);
    }
}

void TransportsTest::program_printsItsPathServesAndStopsOnTerm() {
    testsupport::TempHome home;
    const QString link = home.file(QStringLiteral("scale0"));
    const QString log = home.file(QStringLiteral("frames.log"));
    QProcess sim;
    sim.start(simProgram(), {"--mode", "addressed", "--ids", "130,131", "--link", link, "--log",
                             log, "--set", "weight 131 42", "--set", "decimals 131 0"});
    QVERIFY2(sim.waitForStarted(kWaitMs), qPrintable(sim.errorString()));
    QVERIFY(sim.waitForReadyRead(kWaitMs));
    const QString path = QString::fromLocal8Bit(sim.readLine()).trimmed();
    QVERIFY(path.startsWith(QLatin1String("/dev/pts/")));
    QCOMPARE(QFileInfo(link).symLinkTarget(), path);

    {
        RawTerminal port(link);
        QVERIFY(port.isOpen());
        QVERIFY(port.write(QByteArray("\x84\x11"
                                      "1\x83\x11"
                                      "1",
                                      6)));
        QCOMPARE(port.readBytes(11), QByteArray("\x83  ") + "    42\r\n");
    }

    sim.terminate();
    QVERIFY(sim.waitForFinished(kWaitMs));
    QCOMPARE(sim.exitStatus(), QProcess::NormalExit);
    QCOMPARE(sim.exitCode(), 0);
    QVERIFY(!QFileInfo::exists(link));
    const QList<QByteArray> lines = home.read(QStringLiteral("frames.log")).split('\n');
    QCOMPARE(lines.size(), 4); // two frames in, one reply out, and the end of the last line
    QVERIFY(lines[0].endsWith(" RX <84><11>1"));
    QVERIFY(lines[1].endsWith(" RX <83><11>1"));
    QVERIFY(lines[2].endsWith(" TX <83>      42<0D><0A>"));
}

void TransportsTest::program_writesKlDat() {
    testsupport::TempHome home;
    const QString file = home.file(QStringLiteral("KL.Dat"));
    QCOMPARE(
        QProcess::execute(simProgram(), {"--write-kl", file, "--lines", "250", "--ids", "130,140"}),
        0);
    const QByteArray content = home.read(QStringLiteral("KL.Dat"));
    QVERIFY(content.endsWith("\r\n"));
    QList<QByteArray> lines = content.split('\n');
    lines.removeLast();
    qsizetype records = 0;
    for (QByteArray line : lines) {
        QVERIFY(line.endsWith('\r'));
        line.chop(1);
        if (sim::isKlRecordLength(line.size())) {
            ++records;
            QVERIFY(line.startsWith('\x82') || line.startsWith('\x8c'));
        }
    }
    QCOMPARE(records, 250);
    QVERIFY(lines.size() > 250);
}

void TransportsTest::program_refusesBadOptions_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("bad mode") << QStringList{"--mode", "rs485"};
    QTest::newRow("bad directive") << QStringList{"--set", "weight 130"};
    QTest::newRow("stray argument") << QStringList{"extra"};
    QTest::newRow("missing scenario") << QStringList{"--scenario", "/nonexistent/scenario"};
    QTest::newRow("tcp only without port") << QStringList{"--no-pty"};
}

void TransportsTest::program_refusesBadOptions() {
    QFETCH(QStringList, arguments);
    QProcess sim;
    sim.start(simProgram(), arguments);
    QVERIFY(sim.waitForFinished(kWaitMs));
    QCOMPARE(sim.exitCode(), 2);
    QVERIFY(sim.readAllStandardOutput().isEmpty());
    QVERIFY(sim.readAllStandardError().startsWith("stellwyn-sim: "));
}

QTEST_GUILESS_MAIN(TransportsTest)
#include "TransportsTest.moc"
