// The serial start routines against a recording MSComm1: what they ask of the port, in which
// order, what they tell the user, and what they leave in the scale table.
#include "FakeSerialPort.h"
#include "RecordingDialogs.h"
#include "ScaleCfgFixture.h"
#include "TempHome.h"
#include "core/AppHome.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "links/SerialLink.h"

#include <QTest>

using namespace stellwyn;
using linkstest::FakeSerialPort;
using testsupport::RecordingDialogs;

namespace {

const QString kPortMessage =
    QStringLiteral("message: The com port you selected either doesn't exist or is already in use");
const QString kNoRowsMessage =
    QStringLiteral("message: There are no RS485 scales defined in setup. Aborting.");
const QString kZeroMessage = QStringLiteral(
    "message:  One of the RS485 scales has a Net ID of 0. Please close this screen and correct "
    "this in the setup screen. Aborting.");

} // namespace

class SerialStart : public QObject {
    Q_OBJECT
private slots:
    void rs232_start_data();
    void rs232_start();
    void rs232_start_portNumberRefusedBeforeTheTrapIsFatal();
    void rs485_start_data();
    void rs485_start();
    void rs485_start_readsTheProgramFolderNotTheDataFolder();
    void rs485_start_twelfthScaleIsFatal();
    void rs485_start_emptyNetIdIsFatal();
};

void SerialStart::rs232_start_data() {
    QTest::addColumn<int>("commport");
    QTest::addColumn<QString>("commsettings");
    QTest::addColumn<QList<int>>("missingPorts");
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<QStringList>("table");

    const QStringList opensCom1{"CommPort 1", "Settings 9600,N,8,1", "InputLen 0", "CommPort 1",
                                "PortOpen true"};
    QTest::newRow("COM1 opens: entry 0 is the one scale")
        << 1 << "9600,N,8,1" << QList<int>{} << opensCom1 << QStringList{}
        << QStringList{"0|Scale - RS232|Unknown|0|12345"};
    QTest::newRow("the settings of the record are used as they stand")
        << 2 << "4800,E,7,2" << QList<int>{}
        << QStringList{"CommPort 2", "Settings 4800,E,7,2", "InputLen 0", "CommPort 2",
                       "PortOpen true"}
        << QStringList{} << QStringList{"0|Scale - RS232|Unknown|0|12345"};
    QTest::newRow("COM2 absent: one message, empty table")
        << 2 << "9600,N,8,1" << QList<int>{2}
        << QStringList{"CommPort 2", "Settings 9600,N,8,1", "InputLen 0", "CommPort 2",
                       "PortOpen true"}
        << QStringList{"beep", kPortMessage} << QStringList{};
}

void SerialStart::rs232_start() {
    QFETCH(int, commport);
    QFETCH(QString, commsettings);
    QFETCH(QList<int>, missingPorts);
    QFETCH(QStringList, operations);
    QFETCH(QStringList, said);
    QFETCH(QStringList, table);

    testsupport::TempHome home;
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = static_cast<std::int16_t>(commport);
    m.commsettings = commsettings;
    // Left over from an earlier screen: the start must clear it.
    m.scalecount = 3;
    m.netid[2] = 132;
    FakeSerialPort port;
    port.missingPorts = QSet<int>(missingPorts.begin(), missingPorts.end());
    RecordingDialogs dialogs;

    links::SerialLink(m, port, dialogs, appHome).rs232_start();

    QCOMPARE(port.operations, operations);
    QCOMPARE(dialogs.said, said);
    QCOMPARE(linkstest::scaleTable(m), table);
    QCOMPARE(m.netid[2], 0);
}

void SerialStart::rs232_start_portNumberRefusedBeforeTheTrapIsFatal() {
    testsupport::TempHome home;
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = 0;
    m.commsettings = QStringLiteral("9600,N,8,1");
    FakeSerialPort port;
    RecordingDialogs dialogs;

    QVERIFY_THROWS_EXCEPTION(core::FatalError,
                             links::SerialLink(m, port, dialogs, appHome).rs232_start());
    QCOMPARE(dialogs.said, QStringList{});
}

void SerialStart::rs485_start_data() {
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QList<int>>("missingPorts");
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<QStringList>("table");

    const QStringList opens{"CommPort 1", "Settings 9600,N,8,1", "InputLen 0", "CommPort 1",
                            "PortOpen true"};
    QTest::newRow("rows served in rising NetID order, not in order of entry")
        << "RS485/132 RS485/130 RS485/131" << QList<int>{} << opens << QStringList{}
        << QStringList{"130|Corvane Scale - RS485 ID#130|Unknown|0|12345",
                       "131|Corvane Scale - RS485 ID#131|Unknown|0|12345",
                       "132|Corvane Scale - RS485 ID#132|Unknown|0|12345"};
    QTest::newRow("inactive rows and rows of another type never enter")
        << "RS232/129 RS485/131- USB485/133 RS485/140 RS485/135" << QList<int>{} << opens
        << QStringList{}
        << QStringList{"135|Corvane Scale - RS485 ID#135|Unknown|0|12345",
                       "140|Corvane Scale - RS485 ID#140|Unknown|0|12345"};
    QTest::newRow("no rows at all: the port is not touched")
        << "" << QList<int>{} << QStringList{} << QStringList{"beep", kNoRowsMessage}
        << QStringList{};
    QTest::newRow("only inactive or other rows count as none")
        << "RS485/130- RS232/131" << QList<int>{} << QStringList{}
        << QStringList{"beep", kNoRowsMessage} << QStringList{};
    QTest::newRow("NetID 0 among good rows stops before the port is touched")
        << "RS485/130 RS485/131 RS485/0 RS485/140" << QList<int>{} << QStringList{}
        << QStringList{"beep", kZeroMessage} << QStringList{};
    QTest::newRow("NetID 0 on an inactive row is no matter")
        << "RS485/0- RS485/130" << QList<int>{} << opens << QStringList{}
        << QStringList{"130|Corvane Scale - RS485 ID#130|Unknown|0|12345"};
    QTest::newRow("port absent after a good list: one message, empty table")
        << "RS485/130" << QList<int>{1} << opens << QStringList{"beep", kPortMessage}
        << QStringList{};
}

void SerialStart::rs485_start() {
    QFETCH(QString, rows);
    QFETCH(QList<int>, missingPorts);
    QFETCH(QStringList, operations);
    QFETCH(QStringList, said);
    QFETCH(QStringList, table);

    testsupport::TempHome home;
    linkstest::makeScaleCfg(home.path(), QStringLiteral("sccfg.mdb"), linkstest::scaleRows(rows));
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = 1;
    // The network always runs at 9600,N,8,1, whatever the record holds.
    m.commsettings = QStringLiteral("1200,O,7,2");
    FakeSerialPort port;
    port.missingPorts = QSet<int>(missingPorts.begin(), missingPorts.end());
    RecordingDialogs dialogs;

    links::SerialLink(m, port, dialogs, appHome).rs485_start();

    QCOMPARE(port.operations, operations);
    QCOMPARE(dialogs.said, said);
    QCOMPARE(linkstest::scaleTable(m), table);
}

void SerialStart::rs485_start_readsTheProgramFolderNotTheDataFolder() {
    testsupport::TempHome home;
    testsupport::TempHome dataFolder;
    linkstest::makeScaleCfg(home.path(), QStringLiteral("sccfg.mdb"),
                            linkstest::scaleRows(QStringLiteral("RS485/150")));
    linkstest::makeScaleCfg(dataFolder.path(), QStringLiteral("svdata.mdb"),
                            linkstest::scaleRows(QStringLiteral("RS485/130 RS485/131")));
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = 1;
    m.datapath = dataFolder.path();
    m.cfgconn = dataFolder.file(QStringLiteral("svdata.mdb"));
    FakeSerialPort port;
    RecordingDialogs dialogs;

    links::SerialLink(m, port, dialogs, appHome).rs485_start();

    QCOMPARE(linkstest::scaleTable(m),
             QStringList{"150|Corvane Scale - RS485 ID#150|Unknown|0|12345"});

    // Without the file in the program's folder there is nothing to fall back on.
    QVERIFY(QFile::remove(home.file(QStringLiteral("sccfg.mdb"))));
    QVERIFY_THROWS_EXCEPTION(core::FatalError,
                             links::SerialLink(m, port, dialogs, appHome).rs485_start());
}

void SerialStart::rs485_start_twelfthScaleIsFatal() {
    QString rows;
    for (int id = 130; id < 142; ++id) {
        rows += QStringLiteral("RS485/%1 ").arg(id);
    }
    testsupport::TempHome home;
    linkstest::makeScaleCfg(home.path(), QStringLiteral("sccfg.mdb"), linkstest::scaleRows(rows));
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = 1;
    FakeSerialPort port;
    RecordingDialogs dialogs;

    QVERIFY_THROWS_EXCEPTION(core::FatalError,
                             links::SerialLink(m, port, dialogs, appHome).rs485_start());
    QCOMPARE(m.scalecount, 11);
    QCOMPARE(m.netid[10], 140);
}

void SerialStart::rs485_start_emptyNetIdIsFatal() {
    testsupport::TempHome home;
    linkstest::makeScaleCfg(home.path(), QStringLiteral("sccfg.mdb"),
                            linkstest::scaleRows(QStringLiteral("RS485/130 RS485/null")));
    core::AppHome appHome(home.path());
    core::Module1 m;
    m.commport = 1;
    FakeSerialPort port;
    RecordingDialogs dialogs;

    QVERIFY_THROWS_EXCEPTION(core::FatalError,
                             links::SerialLink(m, port, dialogs, appHome).rs485_start());
    QCOMPARE(dialogs.said, QStringList{});
}

QTEST_GUILESS_MAIN(SerialStart)
#include "test_serial_start.moc"
