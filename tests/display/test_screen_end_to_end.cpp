// The real program against a simulated RS-232 indicator on a pseudo-terminal: activated at
// start-up, it keeps the indicator's "#" print lines in datacol.
#include "../links/SimProcess.h"
#include "TempHome.h"
#include "core/store/Connection.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QSettings>
#include <QTest>

using namespace stellwyn;

class ScreenEndToEndTest : public QObject {
    Q_OBJECT
private slots:
    void rs232_printLinesLandInDatacol();
};

void ScreenEndToEndTest::rs232_printLinesLandInDatacol() {
    linkstest::SimProcess indicator({QStringLiteral("--mode"), QStringLiteral("rs232"),
                                     QStringLiteral("--set"), QStringLiteral("weight * 123.4"),
                                     QStringLiteral("--set"),
                                     QStringLiteral("print * at 1 every 1")});
    QVERIFY2(!indicator.slavePath().isEmpty(), qPrintable(indicator.errorText()));

    testsupport::TempHome home;
    core::createDatabase(home.path());
    {
        auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
        connection.run(QStringLiteral("update syscfg set commtype = ?, commport = ?"),
                       {QStringLiteral("RS232"), 1});
    }
    {
        QSettings ini(home.file(QStringLiteral("stellwyn.ini")), QSettings::IniFormat);
        ini.setValue(QStringLiteral("Ports/COM1"), indicator.slavePath());
    }

    QProcess program;
    program.setProgram(qEnvironmentVariable("STELLWYN_BIN_DIR") + QStringLiteral("/stellwyn"));
    program.setArguments({QStringLiteral("--activate"), QStringLiteral("--unattended"),
                          QStringLiteral("--home"), home.path()});
    program.start();
    QVERIFY2(program.waitForStarted(5000), qPrintable(program.errorString()));

    QList<core::DataColRow> rows;
    const QDeadlineTimer deadline(20000);
    while (rows.size() < 2 && !deadline.hasExpired() && program.state() == QProcess::Running) {
        program.waitForFinished(250);
        auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
        rows = core::readings(connection, core::DataColOrder::byId);
    }
    program.terminate();
    program.waitForFinished(5000);
    const QString said = QString::fromLocal8Bit(program.readAllStandardError());
    QVERIFY2(rows.size() >= 2,
             qPrintable(QStringLiteral("rows %1; said: %2").arg(rows.size()).arg(said)));
    for (const core::DataColRow& row : rows) {
        QCOMPARE(row.scaleId, QStringLiteral("Scale - RS232"));
        // RS-232 keeps the print line as it came: "#", the group, the weight.
        QVERIFY2(row.reading.toString().startsWith(u'#'), qPrintable(row.reading.toString()));
        QVERIFY(row.reading.toString().endsWith(QStringLiteral("123.4")));
    }
    QVERIFY2(!said.contains(QStringLiteral("message:")), qPrintable(said));
}

QTEST_GUILESS_MAIN(ScreenEndToEndTest)
#include "test_screen_end_to_end.moc"
