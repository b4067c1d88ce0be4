// The d2xx backend against a driver library of our own making: the calls reach the library
// with the arguments the adapter needs, bytes pass byte for byte, a library without the
// retry call is out of date but works, a missing library fails like an empty bus, and an
// adapter pulled out comes back by its serial number.
#include "RecordingDialogs.h"
#include "ScaleCfgFixture.h"
#include "TempHome.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "links/D2xxFtdi.h"
#include "links/UsbLink.h"

#include <QRegularExpression>
#include <QTest>
#include <dlfcn.h>

using namespace stellwyn;
using testsupport::RecordingDialogs;

namespace {

// The test's own hold on the library the backend loads: the same copy, so its state is shared.
class FakeLibrary {
public:
    explicit FakeLibrary(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}
    ~FakeLibrary() {
        if (handle_ != nullptr) {
            dlclose(handle_);
        }
    }
    FakeLibrary(const FakeLibrary&) = delete;
    FakeLibrary& operator=(const FakeLibrary&) = delete;

    bool ok() const { return handle_ != nullptr; }
    void setup(const char* devices) { fn<void (*)(const char*)>("fakeftd2xx_setup")(devices); }
    void fail(const char* call, unsigned status) {
        fn<void (*)(const char*, unsigned)>("fakeftd2xx_fail")(call, status);
    }
    QStringList log() {
        return QString::fromLatin1(fn<const char* (*)()>("fakeftd2xx_log")())
            .split(u';', Qt::SkipEmptyParts);
    }
    QByteArray written(int device) {
        char buffer[1024];
        const unsigned n =
            fn<unsigned (*)(int, char*, unsigned)>("fakeftd2xx_written")(device, buffer, 1024);
        return QByteArray(buffer, n);
    }
    void feed(int device, const QByteArray& bytes) {
        fn<void (*)(int, const char*, unsigned)>("fakeftd2xx_feed")(
            device, bytes.constData(), static_cast<unsigned>(bytes.size()));
    }
    void unplug(int device) { fn<void (*)(int)>("fakeftd2xx_unplug")(device); }
    // The device comes back last on the bus.
    void plug(int device) { fn<void (*)(int)>("fakeftd2xx_plug")(device); }
    int eventSignalled(int device) {
        return fn<int (*)(int)>("fakeftd2xx_event_signalled")(device);
    }

private:
    template <typename Fn> Fn fn(const char* name) {
        return reinterpret_cast<Fn>(dlsym(handle_, name));
    }
    void* handle_;
};

const QStringList kOpenLog{"FT_ListDevices count",
                           "FT_ListDevices 0 1",
                           "FT_Open 0",
                           "FT_SetEventNotification 1 event",
                           "FT_SetBaudRate 9600",
                           "FT_SetDataCharacteristics 8 0 0",
                           "FT_SetFlowControl 0 0 0",
                           "FT_SetTimeouts 1000 0",
                           "FT_SetResetPipeRetryCount 0"};

} // namespace

class D2xxBackend : public QObject {
    Q_OBJECT
private slots:
    void usb485_start_setsUpTheAdapterAndPassesBytes();
    void oldLibrary_isOutOfDateButTheLinkWorks();
    void missingLibrary_failsAsWithNoDevice();
    void adapterPulledAndBack_isToldOnceAndOpensAgainBySerialNumber();
    void usb_start_readsSerialNumbersAndDescriptionsByIndex();
    void usb_close_refusesNumbersTheLibraryNeverGave_data();
    void usb_close_refusesNumbersTheLibraryNeverGave();
};

void D2xxBackend::usb485_start_setsUpTheAdapterAndPassesBytes() {
    FakeLibrary fake(FAKE_D2XX);
    QVERIFY(fake.ok());
    fake.setup("FT4XQ2ZA|USB-RS485 Cable");
    testsupport::TempHome data;
    linkstest::makeScaleCfg(data.path(), QStringLiteral("svdata.mdb"),
                            linkstest::scaleRows(QStringLiteral("RS485/131 RS485/130")));
    RecordingDialogs dialogs;
    links::D2xxFtdi ftdi(QStringLiteral(FAKE_D2XX), {});
    core::Module1 m;
    m.commtype = QStringLiteral("USB485");
    m.cfgconn = core::connectionText(data.path());
    links::UsbLink link(m, ftdi, dialogs);

    link.usb485_start();

    QCOMPARE(dialogs.said, QStringList{});
    QCOMPARE(fake.log(), kOpenLog);
    QCOMPARE(m.scalecount, 2);
    QCOMPARE(m.netid[0], 130);

    const QByteArray request = QByteArray(1, '\x82') + "\x11" + "1";
    link.usb_write(request);
    link.usb_write(QByteArray("\xff\x80", 2));
    QCOMPARE(fake.written(0), request + "\xff\x80");

    const QByteArray cell = QByteArray(1, '\x82') + "+ 00012.5\r\n";
    fake.feed(0, cell);
    // The event the program armed is the one the library signals.
    QCOMPARE(fake.eventSignalled(0), 1);
    links::DWORD waiting = 0;
    QCOMPARE(ftdi.FT_GetQueueStatus(m.usbhandle, waiting), links::FT_OK);
    QCOMPARE(waiting, links::DWORD(cell.size()));
    QByteArray got;
    links::DWORD n = 0;
    QCOMPARE(ftdi.FT_Read(m.usbhandle, got, waiting, n), links::FT_OK);
    QCOMPARE(got, cell);

    m.commtype = QStringLiteral("USB485");
    link.usb_close();
    QCOMPARE(fake.log().last(), QStringLiteral("FT_Close"));
    QCOMPARE(m.usbhandle, 0);
}

void D2xxBackend::oldLibrary_isOutOfDateButTheLinkWorks() {
    FakeLibrary fake(FAKE_D2XX_OLD);
    QVERIFY(fake.ok());
    fake.setup("A1|cable");
    RecordingDialogs dialogs;
    links::D2xxFtdi ftdi(QStringLiteral(FAKE_D2XX_OLD), {});
    core::Module1 m;
    m.commtype = QStringLiteral("USB485");
    links::UsbLink link(m, ftdi, dialogs);

    link.usb_open();

    QCOMPARE(dialogs.said,
             QStringList{
                 "message: The USB drivers are out of date. Please install the latest drivers."});
    QCOMPARE(m.usbinitfail, 0);
    QVERIFY(m.usbhandle != 0);
    link.usb_write("\x83\x11"
                   "1");
    QCOMPARE(fake.written(0), QByteArray("\x83\x11"
                                         "1"));
}

void D2xxBackend::missingLibrary_failsAsWithNoDevice() {
    RecordingDialogs dialogs;
    const QString path = QStringLiteral("/nonexistent/stellwyn/libftd2xx.so");
    QStringList statuses;
    links::D2xxFtdi ftdi(path, [&statuses](const QString& text) { statuses << text; });
    core::Module1 m;
    links::UsbLink link(m, ftdi, dialogs);

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QRegularExpression::escape(path)));
    link.usb_open();

    // One box, the link's own; the library's trouble on the status bar and in the log.
    QCOMPARE(dialogs.said,
             QStringList{QStringLiteral("message: No device can be found on the USB.")});
    QCOMPARE(statuses.size(), 1);
    QVERIFY2(statuses[0].contains(path), qPrintable(statuses[0]));
    QCOMPARE(m.usbinitfail, 1);
    QCOMPARE(m.usbhandle, 0);
    // Nothing the program holds can reach a library that is not there.
    QCOMPARE(ftdi.FT_Close(0), links::FT_INVALID_HANDLE);
}

void D2xxBackend::adapterPulledAndBack_isToldOnceAndOpensAgainBySerialNumber() {
    FakeLibrary fake(FAKE_D2XX);
    QVERIFY(fake.ok());
    fake.setup("FT4XQ2ZA|USB-RS485 Cable;X9|Other cable");
    RecordingDialogs dialogs;
    QStringList told;
    links::D2xxFtdi ftdi(QStringLiteral(FAKE_D2XX), [&told](const QString& text) { told << text; });
    core::Module1 m;
    m.commtype = QStringLiteral("USB485");
    links::UsbLink link(m, ftdi, dialogs);
    link.usb_open();
    QCOMPARE(dialogs.said, QStringList{});
    const QByteArray request = QByteArray(1, '\x82') + "\x11" + "1";
    links::DWORD waiting = 0;

    fake.unplug(0);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("FT4XQ2ZA is gone")));
    for (int i = 0; i < 3; ++i) {
        link.usb_write(request);
        QCOMPARE(ftdi.FT_GetQueueStatus(m.usbhandle, waiting), links::FT_IO_ERROR);
    }
    QCOMPARE(told.size(), 1);

    // Back behind the other cable: found by its serial number, not by its old place.
    fake.plug(0);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("FT4XQ2ZA is back")));
    QTRY_COMPARE_WITH_TIMEOUT(ftdi.FT_GetQueueStatus(m.usbhandle, waiting), links::FT_OK, 2000);
    QCOMPARE(told.size(), 2);
    const QStringList log = fake.log();
    const QStringList reopened = log.mid(log.lastIndexOf(QStringLiteral("FT_Open 1")));
    // The same line and the same armed event as before, and nothing else touched.
    for (const QString& call : kOpenLog.mid(3)) {
        QVERIFY2(reopened.contains(call), qPrintable(call));
    }
    // The cable now first on the bus was never taken for it.
    QCOMPARE(log.count(QStringLiteral("FT_Open 0")), 1);

    link.usb_write(request);
    QCOMPARE(fake.written(0), request);
    fake.feed(0, "\x82 12.5\r\n");
    QCOMPARE(fake.eventSignalled(0), 1);
    QCOMPARE(ftdi.FT_GetQueueStatus(m.usbhandle, waiting), links::FT_OK);
    QCOMPARE(waiting, links::DWORD(8));
}

void D2xxBackend::usb_start_readsSerialNumbersAndDescriptionsByIndex() {
    FakeLibrary fake(FAKE_D2XX);
    QVERIFY(fake.ok());
    fake.setup("AB12|Corvane 880;CD34\x01|Corvane 780 {x}");
    RecordingDialogs dialogs;
    links::D2xxFtdi ftdi(QStringLiteral(FAKE_D2XX), {});
    core::Module1 m;
    m.commtype = QStringLiteral("USB");

    links::UsbLink(m, ftdi, dialogs).usb_start();

    QCOMPARE(dialogs.said, QStringList{});
    QCOMPARE(m.scalecount, 2);
    QCOMPARE(m.scaleserial[0], QStringLiteral("AB12"));
    QCOMPARE(m.scaledesc[0], QStringLiteral("Corvane 880"));
    QCOMPARE(m.scaleserial[1], QStringLiteral("CD34"));
    QCOMPARE(m.scaledesc[1], QStringLiteral("Corvane 780 {x}"));
    QCOMPARE(fake.log(),
             (QStringList{"FT_ListDevices count", "FT_ListDevices 0 1", "FT_ListDevices 0 2",
                          "FT_ListDevices 1 1", "FT_ListDevices 1 2"}));
}

void D2xxBackend::usb_close_refusesNumbersTheLibraryNeverGave_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QList<int>>("netids");

    QTest::newRow("RS232: netid 0") << "RS232" << QList<int>{0};
    QTest::newRow("RS485: network ids") << "RS485" << QList<int>{130, 131, 255};
}

void D2xxBackend::usb_close_refusesNumbersTheLibraryNeverGave() {
    QFETCH(QString, commtype);
    QFETCH(QList<int>, netids);
    FakeLibrary fake(FAKE_D2XX);
    QVERIFY(fake.ok());
    fake.setup("A1|cable");
    RecordingDialogs dialogs;
    links::D2xxFtdi ftdi(QStringLiteral(FAKE_D2XX), {});
    core::Module1 m;
    links::UsbLink link(m, ftdi, dialogs);
    link.usb_open();
    m.commtype = commtype;
    m.scalecount = static_cast<std::int16_t>(netids.size());
    for (int i = 0; i < netids.size(); ++i) {
        m.netid[i] = netids[i];
    }

    link.usb_close();

    QVERIFY(!fake.log().contains(QStringLiteral("FT_Close")));
    QCOMPARE(m.usbhandle, 0);
    QCOMPARE(dialogs.said, QStringList{});
}

QTEST_GUILESS_MAIN(D2xxBackend)
#include "test_d2xx.moc"
