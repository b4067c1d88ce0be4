// The Setup screen's logic over a real data file: what loading adds and says, what each
// control writes and when, which rows are shown, what is refused, and the device of a port.
#include "SetupFixture.h"
#include "core/LoadSettings.h"
#include "core/ScaleAddress.h"
#include "core/SerialDeviceList.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

using namespace stellwyn;
using core::fieldNetId;
using setuptest::SetupFixture;

namespace {

QList<qint64> shownNetIds(core::ScaleRecordset& rs) {
    QList<qint64> ids;
    rs.MoveFirst();
    while (!rs.eof() && rs.RecordCount() > 0) {
        ids << rs.current()->netId.toLongLong();
        rs.MoveNext();
    }
    rs.MoveFirst();
    return ids;
}

void touch(const QString& path, const QByteArray& bytes = {}) {
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

class SetupTest : public QObject {
    Q_OBJECT
private slots:
    void load_emptyScaleCfg_addsTheNetId130RowAndSaysSo_data();
    void load_emptyScaleCfg_addsTheNetId130RowAndSaysSo();
    void load_withoutSyscfgRecord_saysSoAndUnloads();
    void linkType_choosesRowsAndControls_data();
    void linkType_choosesRowsAndControls();
    void typedNumber_isStoredOrMarked_data();
    void typedNumber_isStoredOrMarked();
    void closing_keepsAChangedSettingAndLoadsIt_data();
    void closing_keepsAChangedSettingAndLoadsIt();
    void addScale_twoRowsMayShareANetId();
    void deleteScale_asksFirst_data();
    void deleteScale_asksFirst();
    void navigation_stopsAtEachEnd();
    void serialDevices_byIdFirstThenTtySThatAnswer();
    void device_showsAndChangesThePortsEntryOfTheChosenPort();
    void blz1_blanksLeadingZeros_data();
    void blz1_blanksLeadingZeros();
    void scaleAddress_isKeptOrRefusedWithANote_data();
    void scaleAddress_isKeptOrRefusedWithANote();
};

void SetupTest::load_emptyScaleCfg_addsTheNetId130RowAndSaysSo_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QList<qint64>>("shown");
    QTest::newRow("USB485 shows the new row") << QStringLiteral("USB485") << QList<qint64>{130};
    // The new row is an RS485 row, so the RS232 view of the table stays empty.
    QTest::newRow("RS232 adds it all the same") << QStringLiteral("RS232") << QList<qint64>{};
}

void SetupTest::load_emptyScaleCfg_addsTheNetId130RowAndSaysSo() {
    QFETCH(QString, commtype);
    QFETCH(QList<qint64>, shown);
    SetupFixture f;
    f.run(QStringLiteral("update syscfg set commtype = ?"), {commtype});
    core::Setup& setup = f.load();

    QCOMPARE(f.dialogs.texts(),
             QStringList{QStringLiteral("message: There were no scale configuration records. A "
                                        "new one has been created for Network ID#130.")});
    QCOMPARE(f.stored(QStringLiteral("select count(*) from ScaleCFG")).toInt(), 1);
    QCOMPARE(f.stored(QStringLiteral("select sctype || '/' || NetID || '/' || Description || '/' "
                                     "|| Active || '/' || SerialNo from ScaleCFG"))
                 .toString(),
             QStringLiteral("RS485/130/SCALE RS485/-1/"));
    QCOMPARE(shownNetIds(setup.datPrimaryRS), shown);
    QCOMPARE(setup.c.txtFields[fieldNetId].text,
             shown.isEmpty() ? QString() : QStringLiteral("130"));
    QVERIFY(!setup.unloaded());
}

void SetupTest::load_withoutSyscfgRecord_saysSoAndUnloads() {
    SetupFixture f;
    f.run(QStringLiteral("delete from syscfg"));
    core::Setup setup(f.m, f.dialogs, f.appHome, f.settings);
    // The settings load of the unload has no record either: that is the fatal error.
    QVERIFY_THROWS_EXCEPTION(core::FatalError, setup.Form_Load());
    QCOMPARE(f.dialogs.texts(),
             QStringList{QStringLiteral("message: The configuration record is missing")});
    QVERIFY(setup.unloaded());
    QCOMPARE(f.stored(QStringLiteral("select count(*) from ScaleCFG")).toInt(), 0);
}

void SetupTest::linkType_choosesRowsAndControls_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QList<qint64>>("shown");
    QTest::addColumn<bool>("port");
    QTest::addColumn<bool>("rf");
    QTest::addColumn<bool>("records");
    QTest::newRow("RS232") << "opt_rs232"
                           << "RS232" << QList<qint64>{5} << true << false << false;
    QTest::newRow("USB-RS485") << "opt_usb485"
                               << "USB485" << QList<qint64>{130, 131, 131} << false << true << true;
    QTest::newRow("Ethernet") << "opt_ethernet"
                              << "Ethernet" << QList<qint64>{130, 131, 131} << false << false
                              << false;
}

void SetupTest::linkType_choosesRowsAndControls() {
    QFETCH(QString, option);
    QFETCH(QString, commtype);
    QFETCH(QList<qint64>, shown);
    QFETCH(bool, port);
    QFETCH(bool, rf);
    QFETCH(bool, records);
    SetupFixture f;
    f.addScale(QStringLiteral("RS485"), 131);
    f.addScale(QStringLiteral("RS232"), 5);
    f.addScale(QStringLiteral("USB"), 131);
    f.addScale(QStringLiteral("RS485"), 130);
    // Start from the other side of each choice, so the click has something to change.
    f.run(QStringLiteral("update syscfg set commtype = ?"),
          {option == u"opt_usb485" ? QStringLiteral("RS232") : QStringLiteral("USB485")});
    core::Setup& setup = f.load();
    core::SetupControls& c = setup.c;
    core::OptionButton& button = option == u"opt_rs232"    ? c.opt_rs232
                                 : option == u"opt_usb485" ? c.opt_usb485
                                                           : c.opt_ethernet;
    button.setValue(true);

    QCOMPARE(f.stored(QStringLiteral("select commtype from syscfg")).toString(), commtype);
    QCOMPARE(shownNetIds(setup.datPrimaryRS), shown);
    QCOMPARE(c.txtFields[fieldNetId].text, QString::number(shown.first()));
    QCOMPARE(c.opt_com1.enabled, port);
    QCOMPARE(c.cmb_device.enabled, port);
    QCOMPARE(c.cmbRfNetID.enabled, rf);
    QCOMPARE(c.chk_RFnet.enabled, rf);
    QCOMPARE(c.Frame2.enabled, records);
    QCOMPARE(c.txtFields[fieldNetId].enabled, records);
    QCOMPARE(c.Command1[2].enabled, records);
    QCOMPARE(c.Command2.enabled, records);
    QCOMPARE(c.Command3.enabled, records);
    QVERIFY(f.dialogs.texts().isEmpty());
}

void SetupTest::typedNumber_isStoredOrMarked_data() {
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");   // in the box once it is left
    QTest::addColumn<QVariant>("stored"); // invalid: marked, and the stored value stays
    const QVariant marked;
    const auto row = [](const char* name, const char* box, const char* typed, const char* shown,
                        const QVariant& stored) {
        QTest::newRow(name) << box << typed << shown << stored;
    };
    row("poll time, text", "netpolltime", "abc", "abc", marked);
    row("poll time, comma", "netpolltime", "0,5", "0,5", marked);
    row("poll time", "netpolltime", "1.5", "1.5", 1.5);
    row("poll time emptied gets its default", "netpolltime", "", ".33", 0.33);
    row("delay, negative", "netdeltime", "-1", "-1", marked);
    row("delay emptied gets its default", "netdeltime", "", ".01", 0.01);
    row("USB reset, text", "usberr", "many", "many", marked);
    row("USB reset", "usberr", "4", "4", 4);
    row("NetID 0", "netid", "0", "0", marked);
    row("NetID 256", "netid", "256", "256", marked);
    row("NetID, text", "netid", "12a", "12a", marked);
    row("NetID, empty", "netid", "", "", marked);
    row("NetID 255", "netid", "255", "255", 255);
}

void SetupTest::typedNumber_isStoredOrMarked() {
    QFETCH(QString, box);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    QFETCH(QVariant, stored);
    SetupFixture f;
    f.run(QStringLiteral("update syscfg set commtype = 'USB485', usbreset = 2, netpolltime = 2, "
                         "netdeltime = 3"));
    f.addScale(QStringLiteral("RS485"), 130);
    core::Setup& setup = f.load();
    core::SetupControls& c = setup.c;
    const QString query = box == u"netid"    ? QStringLiteral("select NetID from ScaleCFG")
                          : box == u"usberr" ? QStringLiteral("select usbreset from syscfg")
                                             : QStringLiteral("select %1 from syscfg").arg(box);
    const QVariant before = f.stored(query);
    core::TextBox& target = box == u"netpolltime"  ? c.txt_netpolltime
                            : box == u"netdeltime" ? c.txt_netdeltime
                            : box == u"usberr"     ? c.txt_usberr
                                                   : c.txtFields[fieldNetId];
    const auto type = [&](const QString& text) {
        target.text = text;
        if (box == u"netpolltime") {
            setup.txt_netpolltime_LostFocus();
        } else if (box == u"netdeltime") {
            setup.txt_netdeltime_LostFocus();
        } else if (box == u"usberr") {
            setup.txt_usberr_Change(text);
        } else {
            setup.txtFields_LostFocus(fieldNetId);
        }
    };
    // A good value also takes away the mark a bad one left.
    if (stored.isValid()) {
        type(QStringLiteral("x"));
        QVERIFY(!target.error.isEmpty());
    }

    type(typed);

    QCOMPARE(target.text, shown);
    QCOMPARE(target.error.isEmpty(), stored.isValid());
    QCOMPARE(f.stored(query).toDouble(), (stored.isValid() ? stored : before).toDouble());
    // What is stored still loads.
    core::loadsettings(f.m);
    QVERIFY(f.dialogs.texts().isEmpty());
}

void SetupTest::closing_keepsAChangedSettingAndLoadsIt_data() {
    QTest::addColumn<bool>("ok");
    QTest::newRow("OK") << true;
    QTest::newRow("Cancel") << false;
}

void SetupTest::closing_keepsAChangedSettingAndLoadsIt() {
    QFETCH(bool, ok);
    SetupFixture f;
    core::Setup& setup = f.load();
    QSignalSpy unloads(&setup, &core::Setup::unloadRequested);
    setup.c.chk_smallfonts.setValue(1);
    setup.c.opt_com2.setValue(true);
    setup.c.cmbRfNetID.setListIndex(5);
    QCOMPARE(f.m.smallfonts, 0);
    f.dialogs.said.clear();

    ok ? setup.c.OK.Click() : setup.c.Cancel.Click();

    QCOMPARE(unloads.count(), 1);
    QCOMPARE(f.dialogs.said, (QStringList{QStringLiteral("busy"), QStringLiteral("idle")}));
    QCOMPARE(f.stored(QStringLiteral("select smallfonts || '/' || commport || '/' || rfnetid "
                                     "from syscfg"))
                 .toString(),
             QStringLiteral("-1/2/5"));
    QCOMPARE(f.m.smallfonts, -1);
    QCOMPARE(f.m.commport, 2);
    QCOMPARE(f.m.rfnetid, QStringLiteral("5"));
}

void SetupTest::addScale_twoRowsMayShareANetId() {
    SetupFixture f;
    f.run(QStringLiteral("update syscfg set commtype = 'USB485'"));
    f.addScale(QStringLiteral("RS485"), 140);
    f.addScale(QStringLiteral("RS485"), 130);
    core::Setup& setup = f.load();
    QSignalSpy focus(&setup, &core::Setup::focusField);
    QCOMPARE(setup.c.txtFields[fieldNetId].text, QStringLiteral("130"));

    setup.c.Command2.Click();

    QCOMPARE(focus.count(), 1);
    QCOMPARE(focus.at(0).at(0).toInt(), fieldNetId);
    const qint64 newId = f.stored(QStringLiteral("select max(ID) from ScaleCFG")).toLongLong();
    QCOMPARE(setup.datPrimaryRS.current()->id, newId);
    QCOMPARE(f.stored(QStringLiteral("select count(*) from ScaleCFG where NetID = 130")).toInt(),
             2);
    QCOMPARE(f.stored(QStringLiteral("select sctype || '/' || Description from ScaleCFG where "
                                     "ID = ?"),
                      {newId})
                 .toString(),
             QStringLiteral("RS485/SCALE RS485"));

    // What is typed over the proposed NetID is written when the box is left.
    setup.c.txtFields[core::fieldDescription].text = QStringLiteral("Dock scale");
    setup.c.txtFields[fieldNetId].text = QStringLiteral("140");
    setup.txtFields_LostFocus(fieldNetId);
    QCOMPARE(f.stored(QStringLiteral("select NetID || '/' || Description from ScaleCFG where "
                                     "ID = ?"),
                      {newId})
                 .toString(),
             QStringLiteral("140/Dock scale"));
    QCOMPARE(f.stored(QStringLiteral("select count(*) from ScaleCFG where NetID = 140")).toInt(),
             2);
    QVERIFY(f.dialogs.texts().isEmpty());
}

void SetupTest::deleteScale_asksFirst_data() {
    QTest::addColumn<bool>("yes");
    QTest::addColumn<QList<qint64>>("left");
    QTest::newRow("No keeps the row") << false << QList<qint64>{130, 131, 132};
    QTest::newRow("Yes deletes it") << true << QList<qint64>{130, 132};
}

void SetupTest::deleteScale_asksFirst() {
    QFETCH(bool, yes);
    QFETCH(QList<qint64>, left);
    SetupFixture f;
    f.run(QStringLiteral("update syscfg set commtype = 'USB485'"));
    for (int id : {132, 130, 131}) {
        f.addScale(QStringLiteral("RS485"), id);
    }
    core::Setup& setup = f.load();
    setup.c.Command1[2].Click();
    QCOMPARE(setup.c.txtFields[fieldNetId].text, QStringLiteral("131"));
    f.dialogs.answers = {yes};

    setup.c.Command3.Click();

    QCOMPARE(f.dialogs.texts(),
             QStringList{QStringLiteral("question: Record Deletion Request: Are you sure that you "
                                        "want to delete this record?")});
    QCOMPARE(shownNetIds(setup.datPrimaryRS), left);
    QCOMPARE(f.stored(QStringLiteral("select count(*) from ScaleCFG")).toInt(), left.size());
    QCOMPARE(setup.c.txtFields[fieldNetId].text, yes ? QStringLiteral("130") : "131");
}

void SetupTest::navigation_stopsAtEachEnd() {
    SetupFixture f;
    f.run(QStringLiteral("update syscfg set commtype = 'USB485'"));
    for (int id : {132, 130, 131}) {
        f.addScale(QStringLiteral("RS485"), id);
    }
    core::Setup& setup = f.load();
    QStringList seen;
    for (int button : {2, 2, 2, 1, 1, 1, 3, 0}) {
        setup.c.Command1[button].Click();
        seen << setup.c.txtFields[fieldNetId].text;
    }
    QCOMPARE(seen, (QStringList{"131", "132", "132", "131", "130", "130", "132", "130"}));
}

void SetupTest::serialDevices_byIdFirstThenTtySThatAnswer() {
    QTemporaryDir root;
    const QString dev = root.filePath(QStringLiteral("dev"));
    const QString sys = root.filePath(QStringLiteral("sys/class/tty"));
    const QString byId = dev + QStringLiteral("/serial/by-id");
    QDir().mkpath(byId);
    touch(dev + QStringLiteral("/ttyUSB0"));
    touch(dev + QStringLiteral("/ttyACM0"));
    QVERIFY(QFile::link(dev + QStringLiteral("/ttyUSB0"),
                        byId + QStringLiteral("/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0")));
    QVERIFY(QFile::link(dev + QStringLiteral("/ttyACM0"),
                        byId + QStringLiteral("/usb-Acme_Scale_Link-if00")));
    QVERIFY(QFile::link(dev + QStringLiteral("/ttyUSB7"),
                        byId + QStringLiteral("/usb-Unplugged_Adapter-if00-port0")));
    // The USB device carries the names; its interface and the tty below it do not.
    const QString usb = root.filePath(QStringLiteral("sys/devices/usb1/1-2"));
    touch(usb + QStringLiteral("/manufacturer"), "FTDI\n");
    touch(usb + QStringLiteral("/product"), "FT232R USB UART\n");
    QDir().mkpath(usb + QStringLiteral("/1-2:1.0/ttyUSB0"));
    QDir().mkpath(sys + QStringLiteral("/ttyUSB0"));
    QVERIFY(QFile::link(usb + QStringLiteral("/1-2:1.0/ttyUSB0"),
                        sys + QStringLiteral("/ttyUSB0/device")));
    for (const auto& [name, type] : {std::pair{"ttyS0", "4\n"}, std::pair{"ttyS1", "0\n"},
                                     std::pair{"ttyS10", "4\n"}, std::pair{"ttyS2", "4\n"}}) {
        touch(sys + u'/' + QLatin1String(name) + QStringLiteral("/type"), type);
        if (QLatin1String(name) != QLatin1String("ttyS2")) {
            touch(dev + u'/' + QLatin1String(name));
        }
    }

    const QList<core::SerialDevice> devices = core::serialDevices({byId, dev, sys});

    QStringList seen;
    for (const core::SerialDevice& d : devices) {
        seen << QFileInfo(d.path).fileName() + u'|' + d.description;
    }
    QCOMPARE(seen, (QStringList{"usb-Acme_Scale_Link-if00|",
                                "usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0|FTDI FT232R USB UART",
                                "ttyS0|", "ttyS10|"}));
    QCOMPARE(devices[1].path,
             byId + QStringLiteral("/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0"));
}

void SetupTest::device_showsAndChangesThePortsEntryOfTheChosenPort() {
    SetupFixture f;
    QTemporaryDir devices;
    const QString present = devices.filePath(QStringLiteral("ttyUSB0"));
    touch(present);
    const QString gone = devices.filePath(QStringLiteral("ttyUSB9"));
    f.settings.saveSetting(QStringLiteral("Ports"), QStringLiteral("COM2"), gone);
    core::Setup setup(f.m, f.dialogs, f.appHome, f.settings);
    setup.listSerialDevices = [present] {
        return QList<core::SerialDevice>{{present, QStringLiteral("FTDI FT232R USB UART")}};
    };
    setup.Form_Load();
    core::SetupControls& c = setup.c;
    QCOMPARE(c.cmb_device.text, QStringLiteral("/dev/ttyS0"));
    QCOMPARE(c.cmb_device.devices.size(), 1);

    c.opt_com2.setValue(true);
    QCOMPARE(c.cmb_device.text, gone);
    QVERIFY(c.lbl_device_gone.visible);

    setup.cmb_device_Commit(present);
    QCOMPARE(f.settings.serialDevicePath(2), present);
    QCOMPARE(f.settings.serialDevicePath(1), QStringLiteral("/dev/ttyS0"));
    QVERIFY(!c.lbl_device_gone.visible);

    // Emptied, the port goes back to its default device.
    setup.cmb_device_Commit(QStringLiteral("  "));
    QVERIFY(!f.settings.contains(QStringLiteral("Ports"), QStringLiteral("COM2")));
    QCOMPARE(c.cmb_device.text, QStringLiteral("/dev/ttyS1"));
}

void SetupTest::blz1_blanksLeadingZeros_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("blanked");
    QTest::newRow("leading zeros") << "00120"
                                   << "120";
    QTest::newRow("none") << "120"
                          << "120";
    QTest::newRow("blanks only") << "   "
                                 << "";
    QTest::newRow("all zeros") << "000"
                               << "";
    QTest::newRow("blank before zeros") << " 012"
                                        << " 012";
}

void SetupTest::blz1_blanksLeadingZeros() {
    QFETCH(QString, text);
    QFETCH(QString, blanked);
    QCOMPARE(core::Setup::blz1(text), blanked);
}

QTEST_GUILESS_MAIN(SetupTest)
void SetupTest::scaleAddress_isKeptOrRefusedWithANote_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept"); // what the settings store holds afterwards
    QTest::addColumn<QString>("connectsTo");
    QTest::addColumn<bool>("refused");
    QTest::newRow("host") << " scales.plant "
                          << "scales.plant"
                          << "scales.plant:2000" << false;
    QTest::newRow("host:port") << "10.1.2.3:4001"
                               << "10.1.2.3:4001"
                               << "10.1.2.3:4001" << false;
    QTest::newRow("bracketed IPv6 and port") << "[::1]:2100"
                                             << "[::1]:2100"
                                             << "[::1]:2100" << false;
    QTest::newRow("bare IPv6") << "fe80::1"
                               << "fe80::1"
                               << "[fe80::1]:2000" << false;
    QTest::newRow("emptied") << ""
                             << ""
                             << "" << false;
    QTest::newRow("port 0") << "scales:0"
                            << "old:2000"
                            << "" << true;
    QTest::newRow("port past 65535") << "scales:70000"
                                     << "old:2000"
                                     << "" << true;
    QTest::newRow("no port after the colon") << "scales:"
                                             << "old:2000"
                                             << "" << true;
    QTest::newRow("no host") << ":2000"
                             << "old:2000"
                             << "" << true;
    QTest::newRow("blank inside") << "scale one"
                                  << "old:2000"
                                  << "" << true;
}

void SetupTest::scaleAddress_isKeptOrRefusedWithANote() {
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QFETCH(QString, connectsTo);
    QFETCH(bool, refused);
    SetupFixture f;
    core::storeScaleAddress(f.settings, QStringLiteral("old:2000"));
    core::Setup& setup = f.load();
    QCOMPARE(setup.c.txt_IP_address.text, QStringLiteral("old:2000"));

    setup.c.txt_IP_address.text = typed;
    setup.txt_IP_address_LostFocus();

    QCOMPARE(core::storedScaleAddress(f.settings), kept);
    QCOMPARE(setup.c.txt_IP_address.error.isEmpty(), !refused);
    QString why;
    const auto address = core::parseScaleAddress(typed, &why);
    QCOMPARE(address ? address->text() : QString(), connectsTo);
}

#include "test_setup.moc"
