// The activation of the main screen on every link: what it says, what it leaves on screen and
// running, and what survives each failure; the link started once; the exit and the unload.
#include "ScreenFixture.h"
#include "core/LoadSettings.h"
#include "core/SettingsStore.h"
#include "core/store/Connection.h"
#include "core/store/DataColTable.h"
#include "core/store/ScaleCfgTable.h"
#include "display/StatusLine.h"

#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <memory>

using namespace stellwyn;
using displaytest::ScreenFixture;

namespace {

// Runs `action` inside yields of the code under test: at the n-th yield only, or at each one
// when n is 0. It posts itself afresh at each delivery, so every yield delivers it.
class AtYield : public QObject {
public:
    AtYield(int n, std::function<void()> action) : n_(n), action_(std::move(action)) { post(); }
    ~AtYield() override { n_ = -1; }
    int delivered() const { return count_; }
    bool fired() const { return fired_; }

private:
    void post() {
        QMetaObject::invokeMethod(
            this, [this] { deliver(); }, Qt::QueuedConnection);
    }
    void deliver() {
        if (n_ < 0) {
            return;
        }
        ++count_;
        post();
        if (n_ == 0 || count_ == n_) {
            fired_ = true;
            action_();
        }
    }
    int n_;
    std::function<void()> action_;
    int count_ = 0;
    bool fired_ = false;
};

struct LinkCase {
    QString commtype;
    QString rows;
    QString sccfgRows;
    int devices = 0;
    bool adapterHeldBefore = false;
};

// A screen on one link, its adapter and devices as the case says.
std::unique_ptr<ScreenFixture> screenFor(const LinkCase& c) {
    auto s = std::make_unique<ScreenFixture>(c.commtype, c.rows, c.sccfgRows);
    for (int i = 0; i < c.devices; ++i) {
        s->ftdi.devices << linkstest::ScriptedFtdi::Device{"S" + QByteArray::number(i),
                                                           "scale " + QByteArray::number(i)};
    }
    if (c.adapterHeldBefore) {
        s->m.usbhandle = 0x777;
    }
    return s;
}

int blankRows(const ScreenFixture& s) {
    auto connection = core::Connection::open(s.home.file(QStringLiteral("svdata.mdb")));
    int blank = 0;
    for (const core::ScaleCfgRow& row : core::allScaleCfg(connection)) {
        blank += row.description.isEmpty() ? 1 : 0;
    }
    return blank;
}

void addLinkCases() {
    QTest::addColumn<LinkCase>("link");
    QTest::newRow("RS232, empty table") << LinkCase{"RS232", "", "", 0, false};
    QTest::newRow("RS485") << LinkCase{"RS485", "", "RS485/130 RS485/131", 0, false};
    QTest::newRow("USB485") << LinkCase{"USB485", "RS485/130 RS485/131", "", 1, false};
    QTest::newRow("USB") << LinkCase{"USB", "", "", 2, true};
}

QString line(const char* text) {
    return QStringLiteral("message: ") + QString::fromUtf8(text);
}

const QString noRows = line("There are no RS485 scales defined in setup. Aborting.");
const QString portMissing =
    line("The com port you selected either doesn't exist or is already in use");

// What the screen shows and runs once activated.
struct Outcome {
    QStringList said;
    bool up = true; // still loaded and visible
    QStringList combo;
    QString mode; // "single", "network" or "" for none chosen
    bool bound = true;
};

} // namespace

Q_DECLARE_METATYPE(Outcome)
Q_DECLARE_METATYPE(LinkCase)

class ActivationTest : public QObject {
    Q_OBJECT
private slots:
    void activation_eachLink_data();
    void activation_eachLink();
    void activation_twice_startsTheLinkOnce_data();
    void activation_twice_startsTheLinkOnce();
    void rs232_emptyTable_getsItsFirstRowFromAdddefrec();
    void usb_opensEachScaleAndKeepsItsRow();
    void exit_stopsEverythingAndKeepsTheAdapterForTheNextScreen();
    void rfnet_runsRfSetupAfterAFailedLink();
    void netIdThatIsNoByte_isToldAndNeverSent_data();
    void netIdThatIsNoByte_isToldAndNeverSent();
    void closedInAnyYield_endsTheActivationClean_data();
    void closedInAnyYield_endsTheActivationClean();
    void activationNestedInAYield_doesNothing_data();
    void activationNestedInAYield_doesNothing();
    void statusLine_tellsTheLinkAndOnlyTodaysRows_data();
    void statusLine_tellsTheLinkAndOnlyTodaysRows();
};

void ActivationTest::activation_eachLink_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("sccfgRows");
    QTest::addColumn<int>("devices");
    QTest::addColumn<bool>("portMissing");
    QTest::addColumn<Outcome>("outcome");

    QTest::newRow("RS232") << "RS232"
                           << ""
                           << "" << 0 << false
                           << Outcome{{}, true, {"Scale - RS232"}, "single", true};
    QTest::newRow("RS232 port missing")
        << "RS232"
        << ""
        << "" << 0 << true << Outcome{{"beep", portMissing}, true, {}, "", true};
    QTest::newRow("RS485") << "RS485"
                           << ""
                           << "RS485/131 RS485/130" << 0 << false
                           << Outcome{
                                  {},
                                  true,
                                  {"Corvane Scale - RS485 ID#130", "Corvane Scale - RS485 ID#131"},
                                  "",
                                  true};
    QTest::newRow("RS485 no rows")
        << "RS485"
        << ""
        << "" << 0 << false << Outcome{{"beep", noRows}, true, {}, "", true};
    QTest::newRow("RS485 NetID 0")
        << "RS485"
        << ""
        << "RS485/130 RS485/0" << 0 << false
        << Outcome{{"beep", line(" One of the RS485 scales has a Net ID of 0. Please close this "
                                 "screen and correct this in the setup screen. Aborting.")},
                   true,
                   {},
                   "",
                   true};
    QTest::newRow("RS485 port missing")
        << "RS485"
        << ""
        << "RS485/130" << 0 << true << Outcome{{"beep", portMissing}, true, {}, "", true};
    QTest::newRow("USB485")
        << "USB485"
        << "RS485/130 RS485/131"
        << "" << 1 << false
        << Outcome{{}, true, {"SCALE RS485 ID#130", "SCALE RS485 ID#131"}, "network", true};
    QTest::newRow("USB485 no adapter")
        << "USB485"
        << "RS485/130"
        << "" << 0 << false
        << Outcome{{line("No device can be found on the USB.")}, false, {}, "", false};
    QTest::newRow("USB485 no rows")
        << "USB485"
        << ""
        << "" << 1 << false << Outcome{{"beep", noRows}, true, {}, "", true};
    // The adapter's open holds device 0, so scale 0's own open of it is refused.
    QTest::newRow("USB") << "USB"
                         << ""
                         << "" << 2 << false << Outcome{{line("Open Failed")}, true, {}, "", true};
    QTest::newRow("USB no device")
        << "USB"
        << ""
        << "" << 0 << false
        << Outcome{{line("No device can be found on the USB.")}, false, {}, "", false};
    // The table comes from the store whatever the socket does; the socket's own fate goes to
    // the status bar.
    QTest::newRow("Ethernet, no address set")
        << "Ethernet"
        << "RS485/130"
        << "" << 0 << false << Outcome{{}, true, {"SCALE RS485 ID#130"}, "network", true};
}

void ActivationTest::activation_eachLink() {
    QFETCH(QString, commtype);
    QFETCH(QString, rows);
    QFETCH(QString, sccfgRows);
    QFETCH(int, devices);
    QFETCH(bool, portMissing);
    QFETCH(Outcome, outcome);

    ScreenFixture s(commtype, rows, sccfgRows);
    for (int i = 0; i < devices; ++i) {
        s.ftdi.devices << linkstest::ScriptedFtdi::Device{"S" + QByteArray::number(i),
                                                          "scale " + QByteArray::number(i)};
    }
    if (portMissing) {
        s.missingPorts = {1};
    }
    display::Form1& form = s.newForm();
    QSignalSpy unloaded(&form, &display::Form1::unloaded);
    form.Form_Load();
    form.Form_Activate();

    QCOMPARE(s.dialogs.said, outcome.said);
    QCOMPARE(form.isVisible(), outcome.up);
    QCOMPARE(unloaded.size(), outcome.up ? 0 : 1);
    // An abort of the link's open unloads the form, so the next pick tries again; any other
    // failure leaves the screen up with the guard set.
    QCOMPARE(s.m.formactive, outcome.up ? core::vbTrue : core::vbFalse);
    QCOMPARE(s.f().Combo1.items(), outcome.combo);
    QCOMPARE(s.f().Combo1.listIndex(), outcome.combo.isEmpty() ? -1 : 0);
    QCOMPARE(s.f().NetList.rows() - 1, outcome.combo.size());
    // The readings can be shown whatever became of the link.
    QCOMPARE(s.f().data2.ConnectionString.isEmpty(), !outcome.bound);
    if (outcome.bound) {
        QCOMPARE(s.f().data2.RecordSource,
                 QStringLiteral("select ID,ScaleID,Reading,Date,Time from datacol"));
        QCOMPARE(s.f().data1.RecordSource, QStringLiteral("select * from scalecfg"));
    }

    const bool single = outcome.mode == u"single";
    const bool network = outcome.mode == u"network";
    QCOMPARE(s.f().opt_single.value(), single);
    QCOMPARE(s.f().opt_network.value(), network);
    QCOMPARE(s.f().Timer2.running(), single);
    QCOMPARE(s.f().Timer1[0].running(), network);
    QCOMPARE(s.f().opt_netscan.value(), network);
    QCOMPARE(s.f().netwindowVisible, network);
    if (outcome.up && !outcome.said.isEmpty()) {
        QVERIFY(!s.f().Timer2.running() && !s.f().Timer4.running());
    }
    if (outcome.combo.size() > 0) {
        QCOMPARE(s.m.curscale, 0);
        QCOMPARE(s.f().txt_polltime.text, QStringLiteral("0.33"));
    }
    // Slave windows are a network feature.
    QCOMPARE(s.f().Frame5.enabled, commtype != u"RS232");
    QCOMPARE(s.f().Command11.enabled, commtype != u"RS232");
}

void ActivationTest::activation_twice_startsTheLinkOnce_data() {
    QTest::addColumn<QString>("commtype");
    QTest::newRow("RS232") << "RS232";
    QTest::newRow("USB485") << "USB485";
}

void ActivationTest::activation_twice_startsTheLinkOnce() {
    QFETCH(QString, commtype);
    ScreenFixture s(commtype, QStringLiteral("RS485/130"));
    s.ftdi.devices = {{"A1", "adapter"}};
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();
    form.Form_Activate();
    QCOMPARE(s.port().operations.filter(QStringLiteral("PortOpen true")).size(),
             commtype == u"RS232" ? 1 : 0);
    QCOMPARE(s.ftdi.calls.filter(QStringLiteral("FT_Open")).size(), commtype == u"USB485" ? 1 : 0);
    QCOMPARE(s.f().Combo1.items().size(), 1);
    QVERIFY(s.dialogs.said.isEmpty());
}

void ActivationTest::rs232_emptyTable_getsItsFirstRowFromAdddefrec() {
    ScreenFixture s(QStringLiteral("RS232"));
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();
    // The row's own fields are the store's to check; here, that the screen's entry is that row.
    QCOMPARE(s.scaleCfgRows(), QStringList{"RS232/Unknown"});
    auto connection = core::Connection::open(s.home.file(QStringLiteral("svdata.mdb")));
    QCOMPARE(s.m.scaleid[0], static_cast<std::int32_t>(core::allScaleCfg(connection)[0].id));
    QCOMPARE(s.m.scaleactive[0], core::vbTrue);

    // A second screen finds the row by its serial number and adds none.
    form.Command1_Click();
    s.newForm().Form_Load();
    s.form().Form_Activate();
    QCOMPARE(s.scaleCfgRows(), QStringList{"RS232/Unknown"});
}

void ActivationTest::usb_opensEachScaleAndKeepsItsRow() {
    ScreenFixture s(QStringLiteral("USB"));
    s.ftdi.devices = {{"A1", "scale a"}, {"B2", "scale b"}};
    // An adapter handle the bus does not hold: its open is skipped, device 0 stays free.
    s.m.usbhandle = 0x777;
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();
    QVERIFY(s.dialogs.said.isEmpty());
    QCOMPARE(s.scaleCfgRows(), (QStringList{"USB/A1", "USB/B2"}));
    QCOMPARE(s.ftdi.calls.filter(QStringLiteral("FT_Open")),
             (QStringList{"FT_Open 0", "FT_Open 1"}));
    QCOMPARE(s.ftdi.openHandles, (QSet<links::FtHandle>{s.m.netid[0], s.m.netid[1]}));
    QCOMPARE(s.ftdi.calls.filter(QStringLiteral("FT_SetBaudRate")).size(), 2);
    // Nothing runs until the operator picks a mode.
    QVERIFY(!s.f().Timer2.running() && !s.f().Timer1[0].running());
}

void ActivationTest::exit_stopsEverythingAndKeepsTheAdapterForTheNextScreen() {
    ScreenFixture s(QStringLiteral("USB485"), QStringLiteral("RS485/130 RS485/131"));
    s.ftdi.devices = {{"A1", "adapter"}};
    display::Form1& form = s.newForm();
    QSignalSpy unloaded(&form, &display::Form1::unloaded);
    form.Form_Load();
    form.Form_Activate();
    s.timers->runFor(1.0);
    QVERIFY(!s.adapterBytes().isEmpty());
    const auto handle = s.m.usbhandle;

    form.Command1_Click();
    QCOMPARE(unloaded.size(), 1);
    QCOMPARE(s.m.formactive, core::vbFalse);
    QCOMPARE(s.m.formclosing, core::vbTrue);
    QCOMPARE(s.m.scalecount, 0);
    for (int i = 0; i < core::timer1Count; ++i) {
        QVERIFY(!s.f().Timer1[i].running());
    }
    QVERIFY(!s.f().Timer2.running() && !s.f().Timer4.running());
    const QByteArray sent = s.adapterBytes();
    s.timers->runFor(2.0);
    QCOMPARE(s.adapterBytes(), sent);
    QCOMPARE(s.m.usbhandle, handle);

    // The next screen reuses the open adapter and says nothing.
    s.dialogs.said.clear();
    s.newForm().Form_Load();
    QCOMPARE(s.m.formclosing, core::vbFalse);
    s.form().Form_Activate();
    QVERIFY(s.dialogs.said.isEmpty());
    QCOMPARE(s.ftdi.calls.filter(QStringLiteral("FT_Open")).size(), 1);
    QCOMPARE(s.f().Combo1.items().size(), 2);
}

void ActivationTest::rfnet_runsRfSetupAfterAFailedLink() {
    ScreenFixture s(QStringLiteral("RS232"));
    displaytest::setSysCfg(s.home.path(), QStringLiteral("rfnet"), -1);
    s.missingPorts = {1};
    display::Form1& form = s.newForm();
    form.Form_Load();
    const double start = s.clock.elapsed();
    form.Form_Activate();
    // No adapter is open on this link: nothing can answer the module's escape in its 2 seconds.
    QCOMPARE(s.dialogs.said.mid(s.dialogs.said.size() - 2),
             (QStringList{"beep", "message: RF Module Not Responding"}));
    QVERIFY(s.clock.elapsed() - start >= 2.0);
    // The adapter's failure ends the activation before the RF start.
    ScreenFixture u(QStringLiteral("USB485"), QStringLiteral("RS485/130"));
    displaytest::setSysCfg(u.home.path(), QStringLiteral("rfnet"), -1);
    u.newForm().Form_Load();
    u.form().Form_Activate();
    QVERIFY(!u.dialogs.said.contains(QStringLiteral("message: RF Module Not Responding")));
}

void ActivationTest::netIdThatIsNoByte_isToldAndNeverSent_data() {
    QTest::addColumn<int>("netId");
    QTest::newRow("256") << 256;
    QTest::newRow("-1") << -1;
    QTest::newRow("300") << 300;
}

// Its low byte would have asked another scale (0, 255, 44), or stood for one in the table.
void ActivationTest::netIdThatIsNoByte_isToldAndNeverSent() {
    QFETCH(int, netId);
    ScreenFixture s(QStringLiteral("USB485"), QStringLiteral("RS485/130 RS485/%1").arg(netId));
    s.ftdi.devices = {{"A1", "adapter"}};
    display::Form1& form = s.newForm();
    form.Form_Load();
    form.Form_Activate();

    QCOMPARE(s.dialogs.said,
             (QStringList{"beep", line("The RS485 scale in setup row 2 has a Net ID of %1, outside "
                                       "0 to 255. It is left out of this screen: please correct "
                                       "this in the setup screen.")
                                      .arg(netId)}));
    QCOMPARE(s.f().Combo1.items(), QStringList{"SCALE RS485 ID#130"});
    s.timers->runFor(1.0);
    const QByteArray sent = s.adapterBytes();
    QVERIFY(!sent.isEmpty());
    QCOMPARE(sent, QByteArray("\x82\x11"
                              "1")
                       .repeated(sent.size() / 3));
}

void ActivationTest::closedInAnyYield_endsTheActivationClean_data() {
    addLinkCases();
}

// The exit is clicked in the first yield of the activation, then in the second, and so on
// until the activation runs through with no yield left to close it in.
void ActivationTest::closedInAnyYield_endsTheActivationClean() {
    QFETCH(LinkCase, link);
    int n = 1;
    for (;; ++n) {
        const auto s = screenFor(link);
        display::Form1& form = s->newForm();
        form.Form_Load();
        const int blankBefore = blankRows(*s);
        AtYield exit(n, [&form] { form.Command1_Click(); });
        form.Form_Activate();
        if (!exit.fired()) {
            break;
        }
        const QString at = QStringLiteral("closed in yield %1").arg(n);
        QVERIFY2(form.isUnloaded(), qPrintable(at));
        QVERIFY2(s->m.scalecount == 0, qPrintable(at));
        // A row added for a scale the unload has cleared from the table would be blank.
        QVERIFY2(blankRows(*s) == blankBefore, qPrintable(at));
        // The adapter stays open for the next screen; no scale device is left held.
        QVERIFY2(s->ftdi.openHandles.isEmpty() ||
                     s->ftdi.openHandles == QSet<links::FtHandle>{s->m.usbhandle},
                 qPrintable(at));
        const QByteArray sent = s->adapterBytes();
        s->timers->runFor(1.0);
        QVERIFY2(s->adapterBytes() == sent, qPrintable(at));
        QVERIFY2(!s->f().Timer1[0].running() && !s->f().Timer2.running(), qPrintable(at));
    }
    // The activation has more than a few yields: each was tried.
    QVERIFY(n > 5);
}

void ActivationTest::activationNestedInAYield_doesNothing_data() {
    addLinkCases();
}

void ActivationTest::activationNestedInAYield_doesNothing() {
    QFETCH(LinkCase, link);
    const auto once = screenFor(link);
    once->newForm().Form_Load();
    once->form().Form_Activate();

    const auto s = screenFor(link);
    display::Form1& form = s->newForm();
    form.Form_Load();
    AtYield again(0, [&form] { form.Form_Activate(); });
    form.Form_Activate();
    QVERIFY(again.delivered() > 5);
    QCOMPARE(s->dialogs.said, once->dialogs.said);
    QCOMPARE(s->ftdi.calls, once->ftdi.calls);
    QCOMPARE(s->port().operations, once->port().operations);
    QCOMPARE(s->f().Combo1.items(), once->f().Combo1.items());
    QCOMPARE(s->scaleCfgRows(), once->scaleCfgRows());
}

void ActivationTest::statusLine_tellsTheLinkAndOnlyTodaysRows_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<bool>("portMissing");
    QTest::addColumn<bool>("activate");
    QTest::addColumn<QString>("link");
    QTest::newRow("RS232 open") << "RS232" << false << true << "Link RS232 open on /dev/ttyS0, ";
    QTest::newRow("RS232 missing")
        << "RS232" << true << true << "Link RS232 closed on /dev/ttyS0, ";
    QTest::newRow("before the screen") << "RS232" << false << false << "Link RS232 closed, ";
    QTest::newRow("USB485 open") << "USB485" << false << true << "Link USB485 open";
}

void ActivationTest::statusLine_tellsTheLinkAndOnlyTodaysRows() {
    QFETCH(QString, commtype);
    QFETCH(bool, portMissing);
    QFETCH(bool, activate);
    QFETCH(QString, link);

    ScreenFixture s(commtype, QStringLiteral("RS485/130"));
    s.ftdi.devices << linkstest::ScriptedFtdi::Device{"S0", "scale 0"};
    if (portMissing) {
        s.missingPorts = {1};
    }
    s.clock.setNow(QDateTime(QDate(2026, 3, 1), QTime(0, 0, 5)));
    {
        auto connection = core::Connection::open(s.m.dataconn);
        // Just before midnight, then twice today.
        core::insertReading(connection, QStringLiteral("130"), QStringLiteral("1.0"),
                            s.clock.now().addSecs(-10));
        core::insertReading(connection, QStringLiteral("130"), QStringLiteral("2.0"),
                            s.clock.now());
        core::insertReading(connection, QStringLiteral("130"), std::nullopt, s.clock.now());
    }
    display::Form1* form = nullptr;
    if (activate) {
        form = &s.newForm();
        form->Form_Load();
        form->Form_Activate();
    } else {
        core::loadsettings(s.m);
    }
    const core::SettingsStore settings(s.appHome.file(QStringLiteral("stellwyn.ini")));
    const QString line =
        display::statusLine(display::linkState(s.m, form, settings), s.m.dataconn, s.clock);
    QVERIFY2(line.startsWith(link), qPrintable(line));
    QVERIFY2(line.endsWith(QStringLiteral(" errors since start; 2 readings stored today")),
             qPrintable(line));
}

QTEST_GUILESS_MAIN(ActivationTest)
#include "test_activation.moc"
