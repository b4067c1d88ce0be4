// The scanners of the single scale on RS-232, the RS-485 network, the single USB scale and the
// Ethernet parser: when a text becomes a reading, and which rows each keeps.
#include "ScannerFixture.h"
#include "acquisition/Frames.h"
#include "links/ChannelFtdi.h"
#include "links/SimChannel.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"
#include "sim/WireTime.h"

#include <QRegularExpression>
#include <QTest>

using namespace stellwyn;
using acquisitiontest::ScannerFixture;

namespace {

// A scale on the serial port: bytes the test feeds, or a simulated line when attached.
struct Serial : ScannerFixture {
    explicit Serial(sim::Bus::Mode mode = sim::Bus::Mode::Rs232) : bus(mode), line(bus, clock) {
        bus.setByteTime(sim::kByteTime9600);
        line.setByteTime(sim::kByteTime9600);
        addScale(130, QStringLiteral("Scale A"));
        bus.add(130).weight().setFixedText("12.5");
        if (mode == sim::Bus::Mode::Addressed) {
            addScale(131, QStringLiteral("Scale B"));
        }
    }

    sim::Indicator& scale(int netId) { return *bus.find(netId); }

    void attach() { serial.line = &line; }

    sim::Bus bus;
    sim::InProcessLink line;
};

// A scale that is a USB device of its own: it answers "*" requests like the serial scale.
class UsbScaleFtdi final : public links::ChannelFtdi {
public:
    explicit UsbScaleFtdi(core::Clock& clock) : clock_(clock) {
        bus.setByteTime(sim::kByteTime9600);
        bus.add(130).weight().setFixedText("12.5");
    }

    sim::Bus bus{sim::Bus::Mode::Rs232};

protected:
    QList<links::FtdiDeviceInfo> devices() override { return {{"U1", "USB scale"}}; }
    std::unique_ptr<links::FtdiChannel> openChannel(int) override {
        return std::make_unique<links::SimChannel>(bus, clock_);
    }

private:
    core::Clock& clock_;
};

} // namespace

class SerialUsbScannersTest : public QObject {
    Q_OBJECT
private slots:
    void rs232_lineTakenAtItsCr_data();
    void rs232_lineTakenAtItsCr();
    void rs232_printFromTheIndicator_isKeptWithNothingTicked();
    void rs485_replies_data();
    void rs485_replies();
    void rs485_replyCutByTheWait_isCompletedByTheNextCall();
    void textWithoutCr_keepsItsNewest4KiB_data();
    void textWithoutCr_keepsItsNewest4KiB();
    void usb_reading_data();
    void usb_reading();
    void parseweight_logsUnderTheScalePickedInCombo1_data();
    void parseweight_logsUnderTheScalePickedInCombo1();
};

void SerialUsbScannersTest::rs232_lineTakenAtItsCr_data() {
    QTest::addColumn<QByteArrayList>("pieces"); // one per scan
    QTest::addColumn<int>("check1");
    QTest::addColumn<QString>("weight");
    QTest::addColumn<QString>("groupnum");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("waiting"); // what the receive text holds at the end

    QTest::newRow("whole line") << QByteArrayList{"  12.5\r\n"} << 1 << "12.5"
                                << "" << QStringList{} << "";
    QTest::newRow("line in pieces") << QByteArrayList{"  1", "2.5\r", "\n"} << 0 << "12.5"
                                    << "" << QStringList{} << "";
    QTest::newRow("no CR yet") << QByteArrayList{"  12.5"} << 0 << ""
                               << "" << QStringList{} << "  12.5";
    QTest::newRow("printed line kept, Check1 off")
        << QByteArrayList{"#3  12.5\r\n"} << 0 << "#3  12.5"
        << " Group 3    12.5\r\n"
        << QStringList{"Scale A|#3  12.5"} << "";
    QTest::newRow("late LF in front of the next line")
        << QByteArrayList{"  12.5\r", "\n  13.0\r"} << 0 << "13.0"
        << "" << QStringList{} << "";
}

void SerialUsbScannersTest::rs232_lineTakenAtItsCr() {
    QFETCH(QByteArrayList, pieces);
    QFETCH(int, check1);
    QFETCH(QString, weight);
    QFETCH(QString, groupnum);
    QFETCH(QStringList, rows);
    QFETCH(QString, waiting);
    Serial s;
    s.f.Check1.setValue(check1);
    for (const QByteArray& piece : pieces) {
        s.serial.received += piece;
        s.scanners.rs232_inputscan();
    }
    QCOMPARE(s.m.scaleweight[0], weight);
    QCOMPARE(s.f.Screen.caption, weight);
    QCOMPARE(s.f.txt_groupnum.text, groupnum);
    QCOMPARE(s.storedRows(), rows);
    QCOMPARE(s.m.scalelast[0], waiting);
    QCOMPARE(s.f.NetList.rows(), 1); // this link leaves the scan table alone
}

void SerialUsbScannersTest::rs232_printFromTheIndicator_isKeptWithNothingTicked() {
    Serial s;
    s.attach();
    s.scale(130).setGroup('2');
    s.bus.print({130}, sim::lineSeconds(s.clock));
    // The ticks of the single mode: the line is still on the wire at the first two.
    for (const double step : {0.0, 0.005, 0.25}) {
        s.clock.advance(step);
        s.scanners.rs232_inputscan();
    }
    QCOMPARE(s.m.scaleweight[0], QStringLiteral("#2  12.5"));
    QCOMPARE(s.storedRows(), QStringList{"Scale A|#2  12.5"});
}

void SerialUsbScannersTest::rs485_replies_data() {
    QTest::addColumn<bool>("address127");
    QTest::addColumn<int>("check1");
    QTest::addColumn<QString>("weight"); // null: dropped
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("Check1 on: the constant rows")
        << false << 1 << "    12.5" << QStringList{"123|123"};
    QTest::newRow("Check1 off") << false << 0 << "    12.5" << QStringList{};
    QTest::newRow("address 127") << true << 1 << QString() << QStringList{};
}

void SerialUsbScannersTest::rs485_replies() {
    QFETCH(bool, address127);
    QFETCH(int, check1);
    QFETCH(QString, weight);
    QFETCH(QStringList, rows);
    Serial s(sim::Bus::Mode::Addressed);
    s.attach();
    if (address127) {
        s.scale(130).addFault(acquisitiontest::fault(sim::Fault::Kind::LowAddress));
    }
    s.f.Check1.setValue(check1);
    const QStringList before = s.snapshot();

    s.port.Output(acquisition::frames::addressedRequest(130, '1'));
    s.scanners.rs485_inputscan();

    if (weight.isNull()) {
        QCOMPARE(s.snapshot(), before);
        return;
    }
    QCOMPARE(s.m.scaleweight[0], weight);
    QCOMPARE(s.f.Screen.caption, weight);
    QCOMPARE(s.f.NetList.text(1, 0), QStringLiteral("Scale A"));
    QCOMPARE(s.f.NetList.text(1, 1), weight);
    QCOMPARE(s.storedRows(), rows);
}

void SerialUsbScannersTest::rs485_replyCutByTheWait_isCompletedByTheNextCall() {
    Serial s(sim::Bus::Mode::Addressed);
    s.attach();
    s.scale(130).addFault(acquisitiontest::fault(sim::Fault::Kind::Split, 1, 0.4, 5));

    s.port.Output(acquisition::frames::addressedRequest(130, '1'));
    s.scanners.rs485_inputscan();
    QCOMPARE(s.m.scalelast[0], QString::fromLatin1("\x82    "));
    QCOMPARE(s.m.scaleweight[0], QString());

    s.scanners.rs485_inputscan();
    QCOMPARE(s.m.scaleweight[0], QStringLiteral("    12.5"));
    QCOMPARE(s.m.scalelast[0], QString());
}

void SerialUsbScannersTest::textWithoutCr_keepsItsNewest4KiB_data() {
    QTest::addColumn<bool>("network");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("weight");
    QTest::newRow("RS232") << false << QByteArray("  12.5\r\n") << "12.5";
    QTest::newRow("RS485") << true << QByteArray("\x82  12.5\r\n") << "  12.5";
}

// A line at the wrong speed: a megabyte of noise that never holds a CR, then the line recovers.
void SerialUsbScannersTest::textWithoutCr_keepsItsNewest4KiB() {
    QFETCH(bool, network);
    QFETCH(QByteArray, reply);
    QFETCH(QString, weight);
    Serial s(network ? sim::Bus::Mode::Addressed : sim::Bus::Mode::Rs232);
    const auto scan = [&] {
        network ? s.scanners.rs485_inputscan() : s.scanners.rs232_inputscan();
    };
    // Said once, however long the noise goes on.
    const QRegularExpression note(QStringLiteral("receive text with no CR grew past 4096"));
    QTest::ignoreMessage(QtWarningMsg, note);
    QTest::failOnWarning(note);

    for (int piece = 0; piece < 16; ++piece) {
        s.serial.received += QByteArray(64 * 1024, 'x');
        scan();
        QCOMPARE(s.m.scalelast[0], QString(4096, u'x'));
    }
    s.serial.received += "\r\n";
    scan();
    s.serial.received += reply;
    scan();
    QCOMPARE(s.m.scaleweight[0], weight);
    QCOMPARE(s.m.scalelast[0], QString());
}

void SerialUsbScannersTest::usb_reading_data() {
    QTest::addColumn<int>("splitAt"); // 0: the reply in one piece
    QTest::addColumn<int>("scans");
    QTest::newRow("whole reply") << 0 << 1;
    QTest::newRow("LF read on its own after the CR") << 7 << 2;
}

void SerialUsbScannersTest::usb_reading() {
    QFETCH(int, splitAt);
    QFETCH(int, scans);
    ScannerFixture s;
    UsbScaleFtdi ftdi(s.clock);
    links::FtHandle handle = 0;
    ftdi.FT_Open(0, handle);
    s.context.links.ftdi = &ftdi;
    s.addScale(handle, QStringLiteral("Scale A"));
    s.f.Check1.setValue(1);
    if (splitAt > 0) {
        ftdi.bus.indicators().front()->addFault(
            acquisitiontest::fault(sim::Fault::Kind::Split, 1, 0.1, splitAt));
    }
    links::DWORD written = 0;
    ftdi.FT_Write(handle, acquisition::frames::starRequest('1'), 2, written);
    for (int scan = 0; scan < scans; ++scan) {
        s.clock.advance(0.06);
        s.scanners.USB_inputscan();
        QCOMPARE(s.m.scaleweight[0], QStringLiteral("12.5"));
    }
    QCOMPARE(s.f.Screen.caption, QStringLiteral("12.5"));
    QCOMPARE(s.f.NetList.text(1, 1), QStringLiteral("12.5"));
    QCOMPARE(s.storedRows(), QStringList{"Scale A|12.5"});
}

void SerialUsbScannersTest::parseweight_logsUnderTheScalePickedInCombo1_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("logging");
    QTest::addColumn<int>("picked");
    QTest::addColumn<QString>("entry0");
    QTest::addColumn<QStringList>("rows");

    const QByteArray reply("\x82  12.5\r\n");
    QTest::newRow("logging off") << reply << false << 0 << "5.0" << QStringList{};
    QTest::newRow("logging on, another scale picked")
        << reply << true << 0 << "5.0" << QStringList{"Scale A|5.0"};
    QTest::newRow("logging on, entry 0 empty")
        << reply << true << 1 << "" << QStringList{"Scale B|<null>"};
    QTest::newRow("address 127") << QByteArray("\x7f  12.5\r\n") << true << 1 << "5.0"
                                 << QStringList{};
}

void SerialUsbScannersTest::parseweight_logsUnderTheScalePickedInCombo1() {
    QFETCH(QByteArray, data);
    QFETCH(bool, logging);
    QFETCH(int, picked);
    QFETCH(QString, entry0);
    QFETCH(QStringList, rows);
    ScannerFixture s;
    s.addScale(129, QStringLiteral("Scale A"));
    s.addScale(130, QStringLiteral("Scale B"));
    s.m.curscale = 1;
    s.m.scaleweight[0] = entry0;
    s.m.scalelogging[1] = logging ? static_cast<std::int16_t>(65535) : std::int16_t{0};
    s.f.Combo1.setListIndex(picked);
    s.f.chk_Excel.setValue(1);

    s.scanners.parseweight(data);

    const bool taken = data.at(0) != '\x7f';
    QCOMPARE(s.m.scaleweight[1], taken ? QStringLiteral("  12.5") : QString());
    QCOMPARE(s.f.Screen.caption, s.m.scaleweight[1]);
    QCOMPARE(s.storedRows(), rows);
    QCOMPARE(s.excelCalls, rows.isEmpty() ? QList<int>{} : QList<int>{picked});
}

QTEST_GUILESS_MAIN(SerialUsbScannersTest)
#include "test_serial_usb_scanners.moc"
