// The collector as a service runs it: no display, a simulated USB-RS485 network on a
// pseudo-terminal under the kernel's serial backend, signals from outside.
#include "../links/SimProcess.h"
#include "TempHome.h"
#include "core/store/Connection.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"
#include "core/store/ScaleCfgTable.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QSqlQuery>
#include <QTest>
#include <csignal>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace stellwyn;

namespace {

QString binary(const QString& name) {
    return qEnvironmentVariable("STELLWYN_BIN_DIR") + u'/' + name;
}

// A home on the adapter that the simulator's terminal stands for, with its two scales.
void makeHome(const testsupport::TempHome& home, const QString& terminal, const QString& pollTime) {
    core::createDatabase(home.path());
    auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
    connection.run(QStringLiteral("update syscfg set commtype = ?"), {QStringLiteral("USB485")});
    for (const int netId : {130, 131}) {
        core::insertScaleCfg(connection, core::setupNewScaleCfg(netId, true));
    }
    QSettings ini(home.file(QStringLiteral("stellwyn.ini")), QSettings::IniFormat);
    ini.setValue(QStringLiteral("USB/Devices"), terminal);
    ini.setValue(QStringLiteral("Collector/AutoSave"), QStringLiteral("true"));
    ini.setValue(QStringLiteral("Collector/PollTime"), pollTime);
}

// The service manager's end of the notification socket: a datagram socket the collector is
// told of through NOTIFY_SOCKET.
class NotifySocket {
public:
    explicit NotifySocket(const QString& path) : path_(path.toLocal8Bit()) {
        fd_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un at{};
        at.sun_family = AF_UNIX;
        qstrncpy(at.sun_path, path_.constData(), sizeof at.sun_path);
        ::bind(fd_, reinterpret_cast<const sockaddr*>(&at), sizeof at);
    }
    ~NotifySocket() {
        ::close(fd_);
        ::unlink(path_.constData());
    }
    // The notices so far, watchdog pings and status lines left out but counted.
    QStringList notices() {
        char buffer[4096];
        for (ssize_t n; (n = ::recv(fd_, buffer, sizeof buffer, 0)) > 0;) {
            const QString notice = QString::fromUtf8(buffer, n);
            if (notice == u"WATCHDOG=1") {
                ++pings;
            } else if (!notice.startsWith(u"STATUS=")) {
                kept << notice.section(u'\n', 0, 0);
            }
        }
        return kept;
    }
    int pings = 0;

private:
    QByteArray path_;
    int fd_ = -1;
    QStringList kept;
};

// Runs the collector with no display of any kind, its log read as it comes.
class Collector {
public:
    explicit Collector(const testsupport::TempHome& home, NotifySocket* manager = nullptr,
                       const QString& notifySocket = {})
        : manager_(manager) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
            env.remove(QString::fromLatin1(name));
        }
        if (!notifySocket.isEmpty()) {
            env.insert(QStringLiteral("NOTIFY_SOCKET"), notifySocket);
            env.insert(QStringLiteral("WATCHDOG_USEC"), QStringLiteral("100000"));
        }
        process.setProcessEnvironment(env);
        process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        process.start(binary(QStringLiteral("stellwyn-collector")),
                      {QStringLiteral("--home"), home.path()});
    }
    ~Collector() {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(5000);
        }
    }

    // Reads the log until it holds `count` lines containing `text` or the time is up.
    bool waitFor(const QString& text, int count = 1, int ms = 20000) {
        const QDeadlineTimer deadline(ms);
        while (log.count(text) < count && !deadline.hasExpired()) {
            // A manager reads as it goes; a full socket would drop the next notice.
            if (manager_ != nullptr) {
                manager_->notices();
            }
            if (!process.waitForReadyRead(100) && process.state() == QProcess::NotRunning) {
                break;
            }
            log += QString::fromLocal8Bit(process.readAllStandardError());
        }
        return log.count(text) >= count;
    }

    void signal(int number) { ::kill(static_cast<pid_t>(process.processId()), number); }

    // Waits for the end; the status, or -1 for a crash or no end.
    int finish() {
        if (!process.waitForFinished(10000)) {
            return -1;
        }
        log += QString::fromLocal8Bit(process.readAllStandardError());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QSet<qint64> reportedRows() const {
        QSet<qint64> ids;
        static const QRegularExpression stored(QStringLiteral("stored reading (\\d+): "));
        for (auto it = stored.globalMatch(log); it.hasNext();) {
            ids.insert(it.next().captured(1).toLongLong());
        }
        return ids;
    }

    QProcess process;
    QString log;

private:
    NotifySocket* manager_;
};

QSet<qint64> keptRows(const testsupport::TempHome& home) {
    auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
    QSqlQuery check = connection.run(QStringLiteral("pragma integrity_check"));
    check.next();
    if (check.value(0).toString() != u"ok") {
        return {-1};
    }
    QSet<qint64> ids;
    for (const core::DataColRow& row : core::readings(connection, core::DataColOrder::byId)) {
        ids.insert(row.id);
    }
    return ids;
}

const QStringList twoScales{QStringLiteral("--mode"), QStringLiteral("addressed"),
                            QStringLiteral("--ids"), QStringLiteral("130,131")};

} // namespace

class CollectorTest : public QObject {
    Q_OBJECT
private slots:
    void linksNoWidgetsNorGui();
    void noDisplay_storesRowsThenEndsOnSigterm_data();
    void noDisplay_storesRowsThenEndsOnSigterm();
    void sighup_takesTheChangedPollTime_toldToTheServiceManager();
};

void CollectorTest::linksNoWidgetsNorGui() {
    QProcess ldd;
    ldd.start(QStringLiteral("ldd"), {binary(QStringLiteral("stellwyn-collector"))});
    QVERIFY(ldd.waitForFinished(10000));
    const QString libraries = QString::fromLocal8Bit(ldd.readAllStandardOutput());
    QVERIFY2(libraries.contains(QStringLiteral("libQt6Core")), qPrintable(libraries));
    QVERIFY2(!libraries.contains(QStringLiteral("libQt6Widgets")), qPrintable(libraries));
    QVERIFY2(!libraries.contains(QStringLiteral("libQt6Gui")), qPrintable(libraries));
}

// The signal comes once rows are being stored, at a moment no one chose: in a pass, between
// passes, in a wait for a reply. Every row the log names is in the file, and every row in the
// file was named: a clean end reports all it stored.
void CollectorTest::noDisplay_storesRowsThenEndsOnSigterm_data() {
    QTest::addColumn<int>("round");
    for (int round = 0; round < 3; ++round) {
        QTest::addRow("round %d", round) << round;
    }
}

void CollectorTest::noDisplay_storesRowsThenEndsOnSigterm() {
    linkstest::SimProcess indicators(twoScales);
    QVERIFY2(!indicators.slavePath().isEmpty(), qPrintable(indicators.errorText()));
    testsupport::TempHome home;
    makeHome(home, indicators.slavePath(), QStringLiteral("0.05"));

    Collector collector(home);
    QVERIFY2(collector.waitFor(QStringLiteral("stored reading"), 4), qPrintable(collector.log));
    QVERIFY2(
        collector.log.contains(QStringLiteral("link: USB485 open on ") + indicators.slavePath()),
        qPrintable(collector.log));
    QTest::qWait(QRandomGenerator::global()->bounded(300));
    QElapsedTimer took;
    took.start();
    collector.signal(SIGTERM);
    QCOMPARE(collector.finish(), 0);
    qInfo("ended %lld ms after SIGTERM", static_cast<long long>(took.elapsed()));

    const QSet<qint64> reported = collector.reportedRows();
    QCOMPARE(keptRows(home), reported);
    QVERIFY(collector.log.contains(QStringLiteral("stored reading 1: 130 ")));
    QVERIFY(collector.log.contains(QStringLiteral("stored reading 2: 131 ")));
    QVERIFY2(!collector.log.contains(QStringLiteral("message:")), qPrintable(collector.log));
}

// A reload under a service manager: ready once the link is up, reloading, ready again, the
// watchdog pinged all along, and stopping at the end.
void CollectorTest::sighup_takesTheChangedPollTime_toldToTheServiceManager() {
    linkstest::SimProcess indicators(twoScales);
    QVERIFY2(!indicators.slavePath().isEmpty(), qPrintable(indicators.errorText()));
    testsupport::TempHome home;
    makeHome(home, indicators.slavePath(), QStringLiteral("0.05"));
    NotifySocket manager(home.file(QStringLiteral("notify")));

    Collector collector(home, &manager, home.file(QStringLiteral("notify")));
    const QString before =
        QStringLiteral("mode: USB485 - Network (Multi User) Mode (running 0.05 sec)");
    QVERIFY2(collector.waitFor(before), qPrintable(collector.log));
    {
        QSettings ini(home.file(QStringLiteral("stellwyn.ini")), QSettings::IniFormat);
        ini.setValue(QStringLiteral("Collector/PollTime"), QStringLiteral("1.5"));
    }
    collector.signal(SIGHUP);
    const QString after =
        QStringLiteral("mode: USB485 - Network (Multi User) Mode (running 1.5 sec)");
    QVERIFY2(collector.waitFor(after), qPrintable(collector.log));
    // Still collecting, on the new period.
    const qsizetype storedBefore = collector.log.count(QStringLiteral("stored reading"));
    QVERIFY2(collector.waitFor(QStringLiteral("stored reading"), int(storedBefore) + 2),
             qPrintable(collector.log));
    // The reopened screen takes commands again (a word it does not know is taken and ignored).
    QProcess exec;
    exec.start(binary(QStringLiteral("stellwyn-exec")),
               {QStringLiteral("--home"), home.path(), QStringLiteral("NOP,1")});
    QVERIFY(exec.waitForFinished(10000));
    QCOMPARE(exec.exitCode(), 0);
    const qsizetype reloaded = collector.log.indexOf(after);
    const QString sinceReload = collector.log.mid(reloaded);
    collector.signal(SIGTERM);
    QCOMPARE(collector.finish(), 0);
    QCOMPARE(keptRows(home), collector.reportedRows());
    QVERIFY(sinceReload.contains(QStringLiteral("stored reading")));
    QCOMPARE(manager.notices(),
             (QStringList{QStringLiteral("READY=1"), QStringLiteral("RELOADING=1"),
                          QStringLiteral("READY=1"), QStringLiteral("STOPPING=1")}));
    QVERIFY(manager.pings > 0);
}

QTEST_GUILESS_MAIN(CollectorTest)
#include "test_collector.moc"
