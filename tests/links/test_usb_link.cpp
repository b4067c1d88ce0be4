// The USB routines against scripted D2XX calls: the order and arguments of each call, every
// message, and the state the routines leave behind.
#include "RecordingDialogs.h"
#include "ScaleCfgFixture.h"
#include "ScriptedFtdi.h"
#include "TempHome.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "links/UsbLink.h"

#include <QTest>

using namespace stellwyn;
using linkstest::ScriptedFtdi;
using testsupport::RecordingDialogs;

namespace {

const QString kNoDevice = QStringLiteral("message: No device can be found on the USB.");
const QString kFlowFailed = QStringLiteral("message: SetFlowControl Failed");
const QString kNotResponding =
    QStringLiteral("message: USB not responding. A system reboot is recommended.");

// The adapter's open, call by call, when every call succeeds.
const QStringList kOpenCalls{"FT_ListDevices count 80000000",
                             "CreateEventA 0 0 \"\"",
                             "FT_Open 0",
                             "FT_SetEventNotification h1 1 e8193",
                             "FT_SetBaudRate h1 9600",
                             "FT_SetDataCharacteristics h1 8 0 0",
                             "FT_SetFlowControl h1 0 0 0",
                             "FT_SetTimeouts h1 1000 0",
                             "FT_SetResetPipeRetryCount h1 0"};

ScriptedFtdi adapter() {
    ScriptedFtdi ftdi;
    ftdi.devices = {{"FT4XQ2ZA", "USB-RS485 Cable"}};
    return ftdi;
}

} // namespace

class UsbLinkTest : public QObject {
    Q_OBJECT
private slots:
    void usb_open_data();
    void usb_open();
    void usb_open_retriesAfterAFailure();
    void usb_close_data();
    void usb_close();
    void usb_write_data();
    void usb_write();
    void usb_start_data();
    void usb_start();
    void usb_start_twelfthDeviceIsFatal();
    void usb485_start_data();
    void usb485_start();
};

void UsbLinkTest::usb_open_data() {
    QTest::addColumn<int>("deviceCount");
    QTest::addColumn<QString>("failingCall");
    QTest::addColumn<bool>("resetPipeMissing");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<int>("usbinitfail");
    QTest::addColumn<bool>("opened");
    QTest::addColumn<int>("eventsCreated");

    QTest::newRow("all calls succeed: no message")
        << 1 << "" << false << QStringList{} << 0 << true << 1;
    QTest::newRow("no device: no event object, nothing opened")
        << 0 << "" << false << QStringList{kNoDevice} << 1 << false << 0;
    QTest::newRow("open refused: the event stays made")
        << 1 << "FT_Open" << false << QStringList{"message: Open Failed"} << 1 << false << 1;
    QTest::newRow("baud rate refused: the link goes on")
        << 1 << "FT_SetBaudRate" << false << QStringList{"message: SetBaudRate Failed"} << 0 << true
        << 1;
    QTest::newRow("data characteristics refused")
        << 1 << "FT_SetDataCharacteristics" << false
        << QStringList{"message: SetDataCharacteristics Failed"} << 0 << true << 1;
    QTest::newRow("flow control refused")
        << 1 << "FT_SetFlowControl" << false << QStringList{kFlowFailed} << 0 << true << 1;
    QTest::newRow("timeouts refused speak of the flow control")
        << 1 << "FT_SetTimeouts" << false << QStringList{kFlowFailed} << 0 << true << 1;
    QTest::newRow("retry count refused")
        << 1 << "FT_SetResetPipeRetryCount" << false
        << QStringList{"message: FT_SetResetPipeRetryCount Failed. The value for USB reset "
                       "indicated in the Setup Screen may be invalid. The system will work but "
                       "will not be optimized for USB errors."}
        << 0 << true << 1;
    QTest::newRow("library without the retry call: out of date, and the link goes on")
        << 1 << "" << true
        << QStringList{"message: The USB drivers are out of date. Please install the latest "
                       "drivers."}
        << 0 << true << 1;
}

void UsbLinkTest::usb_open() {
    QFETCH(int, deviceCount);
    QFETCH(QString, failingCall);
    QFETCH(bool, resetPipeMissing);
    QFETCH(QStringList, said);
    QFETCH(int, usbinitfail);
    QFETCH(bool, opened);
    QFETCH(int, eventsCreated);

    ScriptedFtdi ftdi = adapter();
    ftdi.devices = ftdi.devices.mid(0, deviceCount);
    if (!failingCall.isEmpty()) {
        ftdi.results[failingCall] = links::FT_IO_ERROR;
    }
    ftdi.resetPipeMissing = resetPipeMissing;
    core::Module1 m;
    RecordingDialogs dialogs;

    links::UsbLink(m, ftdi, dialogs).usb_open();

    QCOMPARE(dialogs.said, said);
    QCOMPARE(m.usbinitfail, usbinitfail);
    QCOMPARE(ftdi.eventsCreated, eventsCreated);
    QCOMPARE(m.fteventhandle != 0, eventsCreated > 0);
    if (opened) {
        // A failed setting leaves the adapter open with its handle kept; nothing is closed.
        QVERIFY(m.usbhandle != 0);
        QVERIFY(ftdi.openHandles.contains(m.usbhandle));
        QCOMPARE(m.curnetid, m.usbhandle);
        QStringList expected = kOpenCalls;
        if (resetPipeMissing) {
            expected.last() = QStringLiteral("FT_SetResetPipeRetryCount missing");
        }
        QCOMPARE(ftdi.calls, expected);
    } else {
        QCOMPARE(m.usbhandle, 0);
        QCOMPARE(ftdi.calls, kOpenCalls.mid(0, deviceCount == 0 ? 1 : 3));
    }
}

void UsbLinkTest::usb_open_retriesAfterAFailure() {
    ScriptedFtdi ftdi = adapter();
    ftdi.results[QStringLiteral("FT_Open")] = links::FT_DEVICE_NOT_OPENED;
    core::Module1 m;
    RecordingDialogs dialogs;
    links::UsbLink link(m, ftdi, dialogs);

    link.usb_open();
    QCOMPARE(m.usbinitfail, 1);
    ftdi.results.clear();
    link.usb_open();

    QCOMPARE(m.usbinitfail, 0);
    QVERIFY(m.usbhandle != 0);
    QCOMPARE(dialogs.said, QStringList{"message: Open Failed"});
}

void UsbLinkTest::usb_close_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QStringList>("closes");

    QTest::newRow("USB485 closes the adapter") << "USB485" << QStringList{"FT_Close h1"};
    // The serial links hold network ids in the table: the library refuses them, and the
    // adapter opened earlier is let be.
    QTest::newRow("RS232 passes its netid 0 and is refused")
        << "RS232" << QStringList{"FT_Close 0"};
    QTest::newRow("RS485 passes network ids")
        << "RS485" << QStringList{"FT_Close 130", "FT_Close 131"};
    QTest::newRow("USB closes each scale's own device")
        << "USB" << QStringList{"FT_Close h2", "FT_Close h3"};
}

void UsbLinkTest::usb_close() {
    QFETCH(QString, commtype);
    QFETCH(QStringList, closes);

    ScriptedFtdi ftdi = adapter();
    ftdi.devices << ScriptedFtdi::Device{"B", "second"} << ScriptedFtdi::Device{"C", "third"};
    core::Module1 m;
    RecordingDialogs dialogs;
    links::UsbLink link(m, ftdi, dialogs);
    link.usb_open();
    m.commtype = commtype;
    if (commtype == u"RS232") {
        m.scalecount = 1;
    } else if (commtype == u"RS485") {
        m.scalecount = 2;
        m.netid[0] = 130;
        m.netid[1] = 131;
    } else if (commtype == u"USB") {
        m.scalecount = 2;
        for (int i = 0; i < 2; ++i) {
            links::FtHandle handle = 0;
            QCOMPARE(ftdi.FT_Open(i + 1, handle), links::FT_OK);
            m.netid[i] = handle;
        }
    }
    ftdi.calls.clear();

    link.usb_close();

    QCOMPARE(ftdi.calls, closes);
    QCOMPARE(m.usbhandle, 0);
    QCOMPARE(dialogs.said, QStringList{});
}

void UsbLinkTest::usb_write_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("toAdapter");
    QTest::addColumn<QByteArray>("sent");

    QTest::newRow("USB485 request: NetID byte, 0x11, code") << "USB485"
                                                            << QByteArray("\x82\x11"
                                                                          "1")
                                                            << true
                                                            << QByteArray("\x82\x11"
                                                                          "1");
    QTest::newRow("bytes above 127 go as single bytes")
        << "USB485" << QByteArray("\xff\x80\xe9") << true << QByteArray("\xff\x80\xe9");
    QTest::newRow("a NUL byte is sent, not taken as an end")
        << "USB485" << QByteArray("a\0b", 3) << true << QByteArray("a\0b", 3);
    QTest::newRow("USB writes to the current scale's device")
        << "USB" << QByteArray("*") << false << QByteArray("*");
    QTest::newRow("more than 256 bytes are cut at 256")
        << "USB485" << QByteArray(300, 'x') << true << QByteArray(256, 'x');
}

void UsbLinkTest::usb_write() {
    QFETCH(QString, commtype);
    QFETCH(QByteArray, text);
    QFETCH(bool, toAdapter);
    QFETCH(QByteArray, sent);

    ScriptedFtdi ftdi = adapter();
    ftdi.devices << ScriptedFtdi::Device{"B", "scale"};
    core::Module1 m;
    RecordingDialogs dialogs;
    links::UsbLink link(m, ftdi, dialogs);
    link.usb_open();
    links::FtHandle scale = 0;
    QCOMPARE(ftdi.FT_Open(1, scale), links::FT_OK);
    m.curnetid = scale;
    m.commtype = commtype;

    link.usb_write(text);

    const links::FtHandle target = toAdapter ? m.usbhandle : scale;
    QCOMPARE(ftdi.written.value(target), sent);
    QCOMPARE(ftdi.written.size(), 1);
}

void UsbLinkTest::usb_start_data() {
    QTest::addColumn<QList<QByteArray>>("serials");
    QTest::addColumn<QList<QByteArray>>("descriptions");
    QTest::addColumn<QString>("failingCall");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<int>("scalecount");
    QTest::addColumn<QStringList>("table");

    QTest::newRow("no device")
        << QList<QByteArray>{} << QList<QByteArray>{} << ""
        << QStringList{"message: There are no Corvane Scales detected on the USB."} << 0
        << QStringList{};
    QTest::newRow("two devices in bus order")
        << QList<QByteArray>{"AB12", "CD34"} << QList<QByteArray>{"Corvane 880", "Corvane 780"}
        << "" << QStringList{} << 2
        << QStringList{"0|Corvane 880|AB12|0|12345", "0|Corvane 780|CD34|1|12345"};
    QTest::newRow("a serial number loses control characters and those above z; a "
                  "description keeps them")
        << QList<QByteArray>{"  A\tB{C~\x01 9  "} << QList<QByteArray>{"  Scale\t{1}  "} << ""
        << QStringList{} << 1 << QStringList{"0|Scale\t{1}|ABC 9|0|12345"};
    QTest::newRow("serial number not answered: stops, count already set")
        << QList<QByteArray>{"AB12"} << QList<QByteArray>{"X"} << "FT_ListDevices serial"
        << QStringList{kNotResponding} << 1 << QStringList{"0|||0|12345"};
    QTest::newRow("description not answered: stops after the serial number")
        << QList<QByteArray>{"AB12"} << QList<QByteArray>{"X"} << "FT_ListDevices description"
        << QStringList{kNotResponding} << 1 << QStringList{"0||AB12|0|12345"};
}

void UsbLinkTest::usb_start() {
    QFETCH(QList<QByteArray>, serials);
    QFETCH(QList<QByteArray>, descriptions);
    QFETCH(QString, failingCall);
    QFETCH(QStringList, said);
    QFETCH(int, scalecount);
    QFETCH(QStringList, table);

    ScriptedFtdi ftdi;
    for (qsizetype i = 0; i < serials.size(); ++i) {
        ftdi.devices << ScriptedFtdi::Device{serials[i], descriptions[i]};
    }
    if (!failingCall.isEmpty()) {
        ftdi.results[failingCall] = links::FT_IO_ERROR;
    }
    core::Module1 m;
    m.scaledesc[3] = QStringLiteral("stale");
    RecordingDialogs dialogs;

    links::UsbLink(m, ftdi, dialogs).usb_start();

    QCOMPARE(dialogs.said, said);
    QCOMPARE(m.scalecount, scalecount);
    QCOMPARE(linkstest::scaleTable(m), table);
    QCOMPARE(m.scaledesc[3], QString());
    // A failure here is not an init failure: the activation goes on.
    QCOMPARE(m.usbinitfail, 0);
}

void UsbLinkTest::usb_start_twelfthDeviceIsFatal() {
    ScriptedFtdi ftdi;
    for (int i = 0; i < 12; ++i) {
        ftdi.devices << ScriptedFtdi::Device{QByteArray::number(i), "scale"};
    }
    core::Module1 m;
    RecordingDialogs dialogs;

    QVERIFY_THROWS_EXCEPTION(core::FatalError, links::UsbLink(m, ftdi, dialogs).usb_start());
    QCOMPARE(m.scaleserial[10], QStringLiteral("10"));
}

void UsbLinkTest::usb485_start_data() {
    QTest::addColumn<int>("deviceCount");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<QStringList>("table");

    QTest::newRow("rows in NetID order with the adapter's texts")
        << 1 << "RS485/131 RS485/130 RS232/129 RS485/133- USB485/134 RS485/200" << QStringList{}
        << QStringList{"130|SCALE RS485 ID#130|Unknown|0|12345",
                       "131|SCALE RS485 ID#131|Unknown|0|12345",
                       "200|SCALE RS485 ID#200|Unknown|0|12345"};
    QTest::newRow("no adapter: the open's message, then the init failure")
        << 0 << "RS485/130" << QStringList{kNoDevice, "message: i_init_fail"} << QStringList{};
    QTest::newRow("no rows")
        << 1 << "RS485/130-"
        << QStringList{"beep", "message: There are no RS485 scales defined in setup. Aborting."}
        << QStringList{};
    QTest::newRow("NetID 0")
        << 1 << "RS485/130 RS485/0"
        << QStringList{"beep", "message:  One of the RS485 scales has a Net ID of 0. Please close "
                               "this screen and correct this in the setup screen. Aborting."}
        << QStringList{};
}

void UsbLinkTest::usb485_start() {
    QFETCH(int, deviceCount);
    QFETCH(QString, rows);
    QFETCH(QStringList, said);
    QFETCH(QStringList, table);

    testsupport::TempHome data;
    linkstest::makeScaleCfg(data.path(), QStringLiteral("svdata.mdb"), linkstest::scaleRows(rows));
    // The serial network's own list must not be read here.
    linkstest::makeScaleCfg(data.path(), QStringLiteral("sccfg.mdb"),
                            linkstest::scaleRows(QStringLiteral("RS485/150")));
    ScriptedFtdi ftdi = adapter();
    ftdi.devices = ftdi.devices.mid(0, deviceCount);
    core::Module1 m;
    m.commtype = QStringLiteral("USB485");
    m.cfgconn = core::connectionText(data.path());
    RecordingDialogs dialogs;

    links::UsbLink(m, ftdi, dialogs).usb485_start();

    QCOMPARE(dialogs.said, said);
    QCOMPARE(linkstest::scaleTable(m), table);
}

QTEST_GUILESS_MAIN(UsbLinkTest)
#include "test_usb_link.moc"
