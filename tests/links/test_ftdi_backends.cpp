// The kernel backend on pseudo-terminals (its device list, bytes both ways, purge, one holder
// per device, bytes gathered for their wire time), the simulated adapter's reads on the virtual
// clock, and the choice of backend by the settings store. A scan through the kernel backend, and an
// adapter pulled and put back, are the screen's end-to-end test's.
#include "PtyPair.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "core/Clock.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "links/D2xxFtdi.h"
#include "links/FtdiFactory.h"
#include "links/KernelDeviceList.h"
#include "links/KernelFtdi.h"
#include "links/SimFtdi.h"
#include "links/UsbLink.h"

#include <QTest>
#include <fcntl.h>
#include <memory>
#include <termios.h>
#include <unistd.h>

using namespace stellwyn;
using links::DWORD;
using links::FT_OK;
using links::FtdiApi;
using links::FtHandle;
using linkstest::allByteValues;
using linkstest::PtyPair;
using testsupport::RecordingDialogs;

namespace {

constexpr int kWireTimeoutMs = 3000;

QByteArray request(int netId) {
    return QByteArray(1, static_cast<char>(netId)) + "\x11" + "1";
}

// Reads one reply as the scanner does: ask how much is queued, then read that much.
QByteArray readReply(FtdiApi& ftdi, FtHandle handle) {
    QByteArray reply;
    [[maybe_unused]] const bool complete = QTest::qWaitFor(
        [&] {
            DWORD waiting = 0;
            ftdi.FT_GetQueueStatus(handle, waiting);
            if (waiting > 0) {
                QByteArray got;
                DWORD n = 0;
                ftdi.FT_Read(handle, got, waiting, n);
                reply += got;
            }
            return reply.contains('\r');
        },
        kWireTimeoutMs);
    return reply;
}

struct Station {
    testsupport::TempHome home;
    core::SettingsStore settings{home.file(QStringLiteral("stellwyn.ini"))};
    core::Module1 m;
    RecordingDialogs dialogs;

    void usbSetting(const char* key, const QString& value) {
        settings.saveSetting(QStringLiteral("USB"), QString::fromLatin1(key), value);
    }
};

// One adapter under the kernel backend: a pseudo-terminal, the only entry of the device list.
// The backend reads its list when asked, so it may be made before the entry is written.
struct KernelAdapter {
    PtyPair pty;
    Station s;
    links::KernelFtdi ftdi{s.settings};
    FtHandle handle = 0;

    KernelAdapter() { s.usbSetting("Devices", pty.slavePath()); }
};

} // namespace

class FtdiBackends : public QObject {
    Q_OBJECT
private slots:
    void kernel_deviceList_data();
    void kernel_deviceList();
    void kernel_portNamesInReadingOrder();
    void kernel_bytesPassBothWaysAndPurgeEmpties();
    void kernel_oneHolderPerDevice();
    void kernel_lineReachesTheDevice_data();
    void kernel_lineReachesTheDevice();
    void kernel_gatheredBytesAreHeldThenHandedOverWhole_data();
    void kernel_gatheredBytesAreHeldThenHandedOverWhole();
    void sim_readWaitsOnTheClockUpToItsTimeout();
    void factory_picksTheBackendOfTheSettings_data();
    void factory_picksTheBackendOfTheSettings();
    void settings_listsTypedByHandAreRead();
};

void FtdiBackends::kernel_deviceList_data() {
    QTest::addColumn<QString>("devices");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<int>("usbinitfail");

    QTest::newRow("an empty list means no device")
        << "" << QStringList{"message: No device can be found on the USB."} << 1;
    QTest::newRow("device 0 that will not open")
        << "/dev/stellwyn-no-such-adapter,PTY" << QStringList{"message: Open Failed"} << 1;
    QTest::newRow("device 0 opens; blanks around entries are dropped")
        << " PTY , /dev/stellwyn-no-such-adapter" << QStringList{} << 0;
}

void FtdiBackends::kernel_deviceList() {
    QFETCH(QString, devices);
    QFETCH(QStringList, said);
    QFETCH(int, usbinitfail);
    PtyPair pty;
    QVERIFY(pty.ok());
    Station s;
    s.usbSetting("Devices", QString(devices).replace(QStringLiteral("PTY"), pty.slavePath()));
    links::KernelFtdi ftdi(s.settings);

    links::UsbLink(s.m, ftdi, s.dialogs).usb_open();

    QCOMPARE(s.dialogs.said, said);
    QCOMPARE(s.m.usbinitfail, usbinitfail);
    QCOMPARE(s.m.usbhandle != 0, usbinitfail == 0);
}

void FtdiBackends::kernel_portNamesInReadingOrder() {
    QStringList names{"ttyUSB10", "ttyUSB2", "ttyACM0", "ttyUSB0", "ttyUSB1"};
    std::sort(names.begin(), names.end(), links::portNameLess);
    QCOMPARE(names, (QStringList{"ttyACM0", "ttyUSB0", "ttyUSB1", "ttyUSB2", "ttyUSB10"}));
}

void FtdiBackends::kernel_bytesPassBothWaysAndPurgeEmpties() {
    PtyPair pty;
    QVERIFY(pty.ok());
    Station s;
    s.usbSetting("Devices", pty.slavePath());
    s.m.commtype = QStringLiteral("USB485");
    links::KernelFtdi ftdi(s.settings);
    links::UsbLink link(s.m, ftdi, s.dialogs);
    link.usb_open();
    QCOMPARE(s.dialogs.said, QStringList{});

    // A pseudo-terminal has no USB descriptors: the list answers are empty, not failures.
    QByteArray buffer;
    QCOMPARE(
        ftdi.FT_ListDevices(0, buffer, links::FT_LIST_BY_INDEX | links::FT_OPEN_BY_SERIAL_NUMBER),
        FT_OK);
    QCOMPARE(buffer.at(0), '\0');

    // Every byte value, then more than the terminal's buffers hold (the link's own writes are
    // cut at its write buffer, so through the driver call): what the device will not take yet
    // waits and follows in order as the far end reads, before the request written after it.
    const QByteArray bulk = allByteValues().repeated(192);
    link.usb_write(allByteValues());
    DWORD written = 0;
    QCOMPARE(ftdi.FT_Write(s.m.usbhandle, bulk, static_cast<DWORD>(bulk.size()), written), FT_OK);
    link.usb_write(request(130));
    const QByteArray sent = allByteValues() + bulk + request(130);
    QByteArray got;
    QVERIFY(QTest::qWaitFor(
        [&] {
            got += pty.receive(sent.size() - got.size(), 5);
            return got.size() >= sent.size();
        },
        kWireTimeoutMs));
    QVERIFY(got == sent);

    pty.send("stale bytes");
    DWORD waiting = 0;
    QTRY_COMPARE_WITH_TIMEOUT((ftdi.FT_GetQueueStatus(s.m.usbhandle, waiting), waiting), DWORD(11),
                              kWireTimeoutMs);
    QCOMPARE(ftdi.FT_Purge(s.m.usbhandle, links::FT_PURGE_RX | links::FT_PURGE_TX), FT_OK);
    QCOMPARE((ftdi.FT_GetQueueStatus(s.m.usbhandle, waiting), waiting), DWORD(0));

    pty.send(QByteArray(1, '\x82') + "  00012.5\r\n");
    const QByteArray reply = readReply(ftdi, s.m.usbhandle);
    QCOMPARE(reply.left(11), QByteArray(1, '\x82') + "  00012.5\r");
}

void FtdiBackends::kernel_oneHolderPerDevice() {
    KernelAdapter adapter;
    links::KernelFtdi& ftdi = adapter.ftdi;
    QVERIFY(adapter.pty.ok());
    FtHandle first = 0;
    FtHandle second = 0;

    QCOMPARE(ftdi.FT_Open(0, first), FT_OK);
    QCOMPARE(ftdi.FT_Open(0, second), links::FT_DEVICE_NOT_OPENED);
    QCOMPARE(ftdi.FT_Close(first), FT_OK);
    QCOMPARE(ftdi.FT_Close(first), links::FT_INVALID_HANDLE);
    QCOMPARE(ftdi.FT_Open(0, second), FT_OK);
}

void FtdiBackends::kernel_lineReachesTheDevice_data() {
    QTest::addColumn<DWORD>("baud");
    QTest::addColumn<int>("wordLength");
    QTest::addColumn<int>("stopBits");
    QTest::addColumn<int>("parity");
    QTest::addColumn<std::uint16_t>("flow");
    QTest::addColumn<unsigned>("cflag");
    QTest::addColumn<unsigned>("iflag");

    QTest::newRow("9600 8N1") << DWORD(9600) << 8 << 0 << 0 << links::FT_FLOW_NONE << 0u << 0u;
    QTest::newRow("250000 7E2, a rate off the standard list")
        << DWORD(250000) << 7 << 2 << 2 << links::FT_FLOW_NONE << unsigned(CSTOPB) << 0u;
    QTest::newRow("19200 8O1, RTS/CTS") << DWORD(19200) << 8 << 0 << 1 << links::FT_FLOW_RTS_CTS
                                        << unsigned(PARODD | CRTSCTS) << 0u;
    QTest::newRow("4800 8M1") << DWORD(4800) << 8 << 0 << 3 << links::FT_FLOW_NONE
                              << unsigned(CMSPAR | PARODD) << 0u;
    QTest::newRow("1200 8S1, XON/XOFF") << DWORD(1200) << 8 << 0 << 4 << links::FT_FLOW_XON_XOFF
                                        << unsigned(CMSPAR) << unsigned(IXON | IXOFF);
}

void FtdiBackends::kernel_lineReachesTheDevice() {
    QFETCH(DWORD, baud);
    QFETCH(int, wordLength);
    QFETCH(int, stopBits);
    QFETCH(int, parity);
    QFETCH(std::uint16_t, flow);
    QFETCH(unsigned, cflag);
    QFETCH(unsigned, iflag);
    KernelAdapter adapter;
    auto& [pty, station, ftdi, handle] = adapter;
    QVERIFY(pty.ok());
    QCOMPARE(ftdi.FT_Open(0, handle), FT_OK);
    QCOMPARE(ftdi.FT_SetBaudRate(handle, baud), FT_OK);
    QCOMPARE(ftdi.FT_SetDataCharacteristics(handle, static_cast<std::uint8_t>(wordLength),
                                            static_cast<std::uint8_t>(stopBits),
                                            static_cast<std::uint8_t>(parity)),
             FT_OK);
    QCOMPARE(ftdi.FT_SetFlowControl(handle, flow, 0x11, 0x13), FT_OK);

    // What the driver holds for the line, seen through a second opening of the device. A
    // pseudo-terminal keeps eight data bits and drops the parity enable whatever it is asked, so
    // those two are left out; the parity's kind, the stop bits, the flow and the rate are kept.
    const int fd = ::open(pty.slavePath().toLocal8Bit().constData(), O_RDONLY | O_NOCTTY);
    QVERIFY(fd >= 0);
    termios tio{};
    QCOMPARE(tcgetattr(fd, &tio), 0);
    const linkstest::LineSpeed speed = linkstest::lineSpeed(fd);
    ::close(fd);
    const tcflag_t shape = PARODD | CMSPAR | CSTOPB | CRTSCTS;
    QCOMPARE(unsigned(tio.c_cflag & shape), cflag);
    QCOMPARE(unsigned(tio.c_iflag & (IXON | IXOFF)), iflag);
    QCOMPARE(tio.c_lflag & (ICANON | ECHO | ISIG), tcflag_t(0));
    QCOMPARE(tio.c_oflag & OPOST, tcflag_t(0));
    QCOMPARE(speed.out, baud);
    QCOMPARE(speed.in, baud);
}

void FtdiBackends::kernel_gatheredBytesAreHeldThenHandedOverWhole_data() {
    QTest::addColumn<QString>("takenBy");
    QTest::newRow("the wire time running out") << QStringLiteral("time");
    QTest::newRow("a read before then") << QStringLiteral("read");
    QTest::newRow("a purge before then") << QStringLiteral("purge");
}

void FtdiBackends::kernel_gatheredBytesAreHeldThenHandedOverWhole() {
    QFETCH(QString, takenBy);
    KernelAdapter adapter;
    auto& [pty, station, ftdi, handle] = adapter;
    QVERIFY(pty.ok());
    QCOMPARE(ftdi.FT_Open(0, handle), FT_OK);
    QCOMPARE(ftdi.FT_SetBaudRate(handle, 9600), FT_OK);
    QCOMPARE(ftdi.FT_SetTimeouts(handle, 500, 0), FT_OK);
    const QByteArray reply = QByteArray(1, '\x82') + "  00012.5\r\n";

    // 300 bytes at 9600 baud: about 0.3 s of gathering.
    ftdi.gatherReceived(handle, 300);
    pty.send(reply);
    QTest::qWait(100);
    DWORD waiting = 0;
    QCOMPARE((ftdi.FT_GetQueueStatus(handle, waiting), waiting), DWORD(0));

    QByteArray got;
    DWORD n = 0;
    if (takenBy == u"time") {
        QTRY_COMPARE_WITH_TIMEOUT((ftdi.FT_GetQueueStatus(handle, waiting), waiting),
                                  DWORD(reply.size()), kWireTimeoutMs);
        QCOMPARE(ftdi.FT_Read(handle, got, waiting, n), FT_OK);
        QCOMPARE(got, reply);
    } else if (takenBy == u"read") {
        QCOMPARE(ftdi.FT_Read(handle, got, static_cast<DWORD>(reply.size()), n), FT_OK);
        QCOMPARE(got, reply);
    } else {
        QCOMPARE(ftdi.FT_Purge(handle, links::FT_PURGE_RX), FT_OK);
        pty.send("next\r");
        QCOMPARE(readReply(ftdi, handle), QByteArray("next\r"));
    }
}

void FtdiBackends::sim_readWaitsOnTheClockUpToItsTimeout() {
    core::VirtualClock clock;
    links::SimFtdi ftdi({130}, clock);
    FtHandle handle = 0;
    QCOMPARE(ftdi.FT_Open(0, handle), FT_OK);
    QCOMPARE(ftdi.FT_SetTimeouts(handle, 1000, 0), FT_OK);
    DWORD written = 0;

    // A reply comes well within the timeout: the read returns with it, long before the second.
    ftdi.FT_Write(handle, request(130), 3, written);
    QByteArray cell;
    DWORD n = 0;
    QCOMPARE(ftdi.FT_Read(handle, cell, 11, n), FT_OK);
    QCOMPARE(n, DWORD(11));
    QVERIFY(clock.elapsed() < 0.1);

    // No one answers NetID 140: the read gives up after the timeout, empty.
    const double before = clock.elapsed();
    ftdi.FT_Write(handle, request(140), 3, written);
    QCOMPARE(ftdi.FT_Read(handle, cell, 11, n), FT_OK);
    QCOMPARE(n, DWORD(0));
    QCOMPARE(clock.elapsed() - before, 1.0);
}

void FtdiBackends::factory_picksTheBackendOfTheSettings_data() {
    QTest::addColumn<QString>("backend");
    QTest::addColumn<QString>("kind");

    QTest::newRow("none set: the system's driver") << ""
                                                   << "kernel";
    QTest::newRow("kernel") << "kernel"
                            << "kernel";
    QTest::newRow("d2xx") << "d2xx"
                          << "d2xx";
    QTest::newRow("sim, any case") << "Sim"
                                   << "sim";
}

void FtdiBackends::factory_picksTheBackendOfTheSettings() {
    QFETCH(QString, backend);
    QFETCH(QString, kind);
    Station s;
    if (!backend.isEmpty()) {
        s.usbSetting("Backend", backend);
    }
    s.usbSetting("SimNetIds", QStringLiteral("130, 131,x,132,999,-1"));
    s.usbSetting("D2xxLibrary", QStringLiteral("/nonexistent/libftd2xx.so"));
    core::VirtualClock clock;

    QStringList statuses;
    const std::unique_ptr<FtdiApi> ftdi = links::makeFtdiApi(
        s.settings, [&statuses](const QString& text) { statuses << text; }, clock);

    if (kind == u"kernel") {
        QVERIFY(dynamic_cast<links::KernelFtdi*>(ftdi.get()) != nullptr);
    } else if (kind == u"d2xx") {
        QVERIFY(dynamic_cast<links::D2xxFtdi*>(ftdi.get()) != nullptr);
        DWORD count = 1;
        ftdi->FT_ListDevices(count, links::FT_LIST_NUMBER_ONLY);
        QCOMPARE(count, DWORD(0));
        QVERIFY(statuses.value(0).contains(QStringLiteral("/nonexistent/libftd2xx.so")));
    } else {
        auto* sim = dynamic_cast<links::SimFtdi*>(ftdi.get());
        QVERIFY(sim != nullptr);
        QCOMPARE(sim->bus().indicators().size(), std::size_t(3));
        QVERIFY(sim->bus().find(132) != nullptr);
    }
}

void FtdiBackends::settings_listsTypedByHandAreRead() {
    testsupport::TempHome home;
    home.write(QStringLiteral("stellwyn.ini"),
               "[USB]\nBackend=sim\nSimNetIds=130,131\nDevices=/dev/null, /dev/zero,\n");
    core::SettingsStore settings(home.file(QStringLiteral("stellwyn.ini")));
    RecordingDialogs dialogs;
    core::VirtualClock clock;

    const std::unique_ptr<FtdiApi> sim = links::makeFtdiApi(settings, {}, clock);
    auto* bus = dynamic_cast<links::SimFtdi*>(sim.get());
    QVERIFY(bus != nullptr);
    QCOMPARE(bus->bus().indicators().size(), std::size_t(2));

    links::KernelFtdi kernel(settings);
    DWORD count = 0;
    QCOMPARE(kernel.FT_ListDevices(count, links::FT_LIST_NUMBER_ONLY), FT_OK);
    QCOMPARE(count, DWORD(2));
}

QTEST_GUILESS_MAIN(FtdiBackends)
#include "test_ftdi_backends.moc"
