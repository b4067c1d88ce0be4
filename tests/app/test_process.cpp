// The real program as a script would run it: unattended messages on standard error in order,
// the exit status of a fatal error, the database made on request, one instance per home.
#include "TempHome.h"

#include <QCryptographicHash>
#include <QDir>
#include <QProcess>
#include <QTest>

using stellwyn::testsupport::TempHome;

namespace {

QString program() {
    return qEnvironmentVariable("STELLWYN_BIN_DIR") + QStringLiteral("/stellwyn");
}

struct Run {
    int status = -1;
    QStringList errLines;
    QString out;
};

Run runStellwyn(const QStringList& arguments) {
    QProcess p;
    p.start(program(), arguments);
    if (!p.waitForFinished(60000)) {
        p.kill();
        p.waitForFinished();
    }
    Run r;
    r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.errLines = QString::fromLocal8Bit(p.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
    r.out = QString::fromLocal8Bit(p.readAllStandardOutput());
    return r;
}

QByteArray digest(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
}

} // namespace

class Process : public QObject {
    Q_OBJECT
private slots:
    void unattended_firstStart_messagesInOrderThenFatal();
    void createDatabase_makesBothFilesAndNeverOverwrites();
    void secondInstance_refusedWhileFirstRuns();
    void commandLine_statusAndFirstWord_data();
    void commandLine_statusAndFirstWord();
    void export_needsTheDataFolderThenWritesTheFile();
    void setupAtStart_unattended_loadsAndClosesTheScreen();
};

void Process::unattended_firstStart_messagesInOrderThenFatal() {
    TempHome home;
    const Run r =
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--unattended")});
    const QString svdata = QDir::toNativeSeparators(home.file(QStringLiteral("svdata.mdb")));
    QCOMPARE(r.status, 1);
    QCOMPARE(r.errLines.size(), 3);
    QCOMPARE(r.errLines[0], QStringLiteral("message: Could not open ") + svdata);
    QCOMPARE(r.errLines[1],
             QStringLiteral("message: The datafile SVDATA.MDB was not found at the configured "
                            "datapath. Please press OK and select one now"));
    QVERIFY2(r.errLines[2].startsWith(QStringLiteral("fatal: ")), qPrintable(r.errLines[2]));
    QVERIFY2(r.errLines[2].contains(svdata), qPrintable(r.errLines[2]));
    QCOMPARE(home.read(QStringLiteral("cfg.txt")), home.path().toLocal8Bit() + '\n');
}

void Process::createDatabase_makesBothFilesAndNeverOverwrites() {
    TempHome home;
    Run r =
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--create-database")});
    QCOMPARE(r.status, 0);
    QVERIFY(home.exists(QStringLiteral("svdata.mdb")));
    QVERIFY(home.exists(QStringLiteral("sccfg.mdb")));

    const QByteArray before = digest(home.file(QStringLiteral("svdata.mdb")));
    r = runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--create-database")});
    QCOMPARE(r.status, 0);
    QVERIFY(r.out.contains(QStringLiteral("already exists")));
    QCOMPARE(digest(home.file(QStringLiteral("svdata.mdb"))), before);
}

void Process::secondInstance_refusedWhileFirstRuns() {
    TempHome home;
    QCOMPARE(
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--create-database")})
            .status,
        0);

    QProcess first;
    first.start(program(), {QStringLiteral("--home"), home.path(), QStringLiteral("--unattended")});
    QVERIFY(first.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(home.exists(QStringLiteral("stellwyn.lock")), 20000);

    const Run second =
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--unattended")});
    QCOMPARE(
        second.errLines,
        QStringList{QStringLiteral(
            "message: There is already a previous instance of the Stellwyn program running.")});
    QCOMPARE(second.status, 0);
    QCOMPARE(first.state(), QProcess::Running);

    // Another home is another station: it starts.
    TempHome other;
    QCOMPARE(
        runStellwyn({QStringLiteral("--home"), other.path(), QStringLiteral("--create-database")})
            .status,
        0);
    QProcess beside;
    beside.start(program(),
                 {QStringLiteral("--home"), other.path(), QStringLiteral("--unattended")});
    QVERIFY(beside.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(other.exists(QStringLiteral("stellwyn.lock")), 20000);
    QTest::qWait(300);
    QCOMPARE(beside.state(), QProcess::Running);

    // A crashed first instance leaves its lock behind; the next start takes it over.
    first.kill();
    first.waitForFinished();
    QProcess third;
    third.start(program(), {QStringLiteral("--home"), home.path(), QStringLiteral("--unattended")});
    QVERIFY(third.waitForStarted());
    QTest::qWait(1500);
    QCOMPARE(third.state(), QProcess::Running);
    third.terminate();
    beside.terminate();
    third.waitForFinished(10000);
    beside.waitForFinished(10000);
}

void Process::export_needsTheDataFolderThenWritesTheFile() {
    TempHome home;
    const QString file = home.file(QStringLiteral("readings.csv"));
    Run r = runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--export"), file});
    QCOMPARE(r.status, 1);
    QCOMPARE(r.errLines.size(), 1);
    QVERIFY(r.errLines.first().startsWith(u"stellwyn: no readings to export"));
    QVERIFY(!QFile::exists(file));

    QCOMPARE(
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--create-database")})
            .status,
        0);
    r = runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--export"), file});
    QCOMPARE(r.status, 0);
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll(), QByteArray("ID,ScaleID,Reading,Date,Time,Group,TagID\r\n"));
}

void Process::commandLine_statusAndFirstWord_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    // The start of the one line on standard output (status 0) or standard error.
    QTest::addColumn<QString>("said");
    QTest::newRow("help") << QStringList{QStringLiteral("--help")} << 0
                          << QStringLiteral("Usage: stellwyn [options]");
    QTest::newRow("version") << QStringList{QStringLiteral("--version")} << 0
                             << QStringLiteral("stellwyn ");
    QTest::newRow("Qt's own options pass")
        << QStringList{QStringLiteral("-platform"),        QStringLiteral("offscreen"),
                       QStringLiteral("-style"),           QStringLiteral("Fusion"),
                       QStringLiteral("--home"),           QStringLiteral("HOME"),
                       QStringLiteral("--create-database")}
        << 0 << QStringLiteral("created ");
    // Unattended runs would pick the offscreen platform: only a -platform that reached the
    // toolkit can make it look for another, and fail.
    QTest::newRow("-platform reaches Qt")
        << QStringList{QStringLiteral("-platform"), QStringLiteral("nosuchplatform"),
                       QStringLiteral("--unattended"), QStringLiteral("--home"),
                       QStringLiteral("HOME")}
        << -1 << QStringLiteral("This application failed to start because no Qt platform");
    QTest::newRow("bad answer") << QStringList{QStringLiteral("--answer"), QStringLiteral("maybe")}
                                << 2 << QStringLiteral("stellwyn: --answer takes yes or no");
    QTest::newRow("unknown") << QStringList{QStringLiteral("--frobnicate")} << 2
                             << QStringLiteral("stellwyn: Unknown option 'frobnicate'");
    QTest::newRow("missing value") << QStringList{QStringLiteral("--home")} << 2
                                   << QStringLiteral("stellwyn: Missing value after '--home'");
    QTest::newRow("bad demo") << QStringList{QStringLiteral("--demo=serial")} << 2
                              << QStringLiteral("stellwyn: --demo= takes ethernet");
    // The collector takes over, says where it runs, and finds no database in a new home.
    QTest::newRow("headless") << QStringList{QStringLiteral("--headless"), QStringLiteral("--home"),
                                             QStringLiteral("HOME")}
                              << 1 << QStringLiteral("collector: ");
    QTest::newRow("headless without a screen's options")
        << QStringList{QStringLiteral("--headless"), QStringLiteral("--activate")} << 2
        << QStringLiteral("stellwyn: --activate does not go with --headless");
}

void Process::commandLine_statusAndFirstWord() {
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, said);
    TempHome home;
    arguments.replaceInStrings(QStringLiteral("HOME"), home.path());
    const Run r = runStellwyn(arguments);
    QCOMPARE(r.status, status);
    const QString text = status == 0 ? r.out : r.errLines.value(0);
    QVERIFY2(text.startsWith(said), qPrintable(text + r.errLines.join(u'\n')));
    if (status == 2) {
        QCOMPARE(r.errLines.size(), 1);
    }
}

// Unattended, the screen cannot be shown: it loads, with its message and the row it adds, and
// closes, and the program goes on running.
void Process::setupAtStart_unattended_loadsAndClosesTheScreen() {
    TempHome home;
    QCOMPARE(
        runStellwyn({QStringLiteral("--home"), home.path(), QStringLiteral("--create-database")})
            .status,
        0);
    QProcess p;
    p.start(program(), {QStringLiteral("--home"), home.path(), QStringLiteral("--unattended"),
                        QStringLiteral("--setup")});
    QVERIFY(p.waitForStarted());
    QString said;
    const auto heard = [&] {
        said += QString::fromLocal8Bit(p.readAllStandardError());
        return said.contains(u'\n');
    };
    QTRY_VERIFY_WITH_TIMEOUT(heard(), 20000);
    QTest::qWait(300);
    QCOMPARE(p.state(), QProcess::Running);
    p.terminate();
    p.waitForFinished(10000);
    said += QString::fromLocal8Bit(p.readAllStandardError());
    QCOMPARE(said, QStringLiteral("message: There were no scale configuration records. A new one "
                                  "has been created for Network ID#130.\n"));
}

QTEST_GUILESS_MAIN(Process)
#include "test_process.moc"
