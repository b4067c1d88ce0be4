// The start of the program in-process: the order of what the operator is told, cfg.txt,
// compaction, the chooser, loadsettings, and the frame's place and menu.
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "app/DemoHome.h"
#include "app/FrmMain.h"
#include "app/FrmMainView.h"
#include "app/Main.h"
#include "core/AppHome.h"
#include "core/Clock.h"
#include "core/FatalError.h"
#include "core/Getdatapath.h"
#include "core/LoadSettings.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "links/SimFtdi.h"
#include "sim/Indicator.h"
#include "sim/WireTime.h"

#include <QApplication>
#include <QDir>
#include <QSignalSpy>
#include <QTest>
#include <limits>

using namespace stellwyn;
using testsupport::RecordingDialogs;
using testsupport::TempHome;

namespace {

const QString notFound = QStringLiteral(
    "message: The datafile SVDATA.MDB was not found at the configured datapath. Please press OK "
    "and select one now");

QString couldNotOpen(const TempHome& home) {
    return QStringLiteral("message: Could not open ") +
           QDir::toNativeSeparators(home.file(QStringLiteral("svdata.mdb")));
}

// Runs the start-up with every hook recording into the same list as the dialogs, so the test
// sees one order of events.
struct Startup {
    explicit Startup(const TempHome& folder) : Startup(folder.path()) {}
    explicit Startup(const QString& folder) : home(folder), main(m, dialogs, home) {
        main.loadFrame = [this] { dialogs.said << QStringLiteral("frame loaded"); };
        main.showFrame = [this] { dialogs.said << QStringLiteral("frame shown"); };
        main.showGetdatapath = [this](core::Getdatapath& chooser) {
            dialogs.said << QStringLiteral("chooser");
            if (chooseFolder) {
                chooseFolder(chooser);
            }
        };
        main.loadsettings = [this] {
            dialogs.said << QStringLiteral("loadsettings");
            core::loadsettings(m);
        };
    }

    core::Module1 m;
    RecordingDialogs dialogs;
    core::AppHome home;
    app::Main main;
    std::function<void(core::Getdatapath&)> chooseFolder;
};

void setSysCfg(const QString& folder, const QString& field, const QVariant& value) {
    core::Connection c = core::Connection::open(core::connectionText(folder));
    c.run(QStringLiteral("update syscfg set %1 = ?").arg(field), {value});
}

} // namespace

class Startup_ : public QObject {
    Q_OBJECT
private slots:
    void firstStart_nothingAnywhere_tellsInOrderThenFails();
    void start_withDatabase_compactsAndLeavesNoTempFile();
    void start_cfgFolderWithComma_usesThePartBeforeIt();
    void start_chooserPicksFolder_takesEffect();
    void start_lockCannotBeMade_isFatalNamingTheFolder();
    void loadsettings_values_data();
    void loadsettings_values();
    void loadsettings_takesEachKeyFromItsOwnColumnAndNoOther();
    void frame_placeFromSettings_liesOnTheScreen_data();
    void frame_placeFromSettings_liesOnTheScreen();
    void frame_closedMinimized_keepsPlace_data();
    void frame_closedMinimized_keepsPlace();
    void frame_setupMenu_refusedWhileScreenUp_data();
    void frame_setupMenu_refusedWhileScreenUp();
    void demo_loadsMoveOnTheLineClock();
};

void Startup_::firstStart_nothingAnywhere_tellsInOrderThenFails() {
    TempHome folder;
    Startup s(folder);
    s.chooseFolder = [&](core::Getdatapath&) {
        // cfg.txt was written before the chooser came up, holding the program's folder.
        QCOMPARE(folder.read(QStringLiteral("cfg.txt")), folder.path().toLocal8Bit() + '\n');
    };
    QVERIFY_THROWS_EXCEPTION(core::FatalError, s.main.run());
    QCOMPARE(s.dialogs.said,
             (QStringList{couldNotOpen(folder), QStringLiteral("frame loaded"),
                          QStringLiteral("frame shown"), notFound, QStringLiteral("chooser"),
                          QStringLiteral("loadsettings")}));
    QCOMPARE(s.m.datapath, folder.path());
    QCOMPARE(s.m.formactive, 0);
}

void Startup_::start_withDatabase_compactsAndLeavesNoTempFile() {
    TempHome folder;
    core::createDatabase(folder.path());
    {
        core::Connection c = core::Connection::open(core::connectionText(folder.path()));
        c.run(QStringLiteral("insert into datacol (ScaleID, Reading) values (?, ?)"),
              {QStringLiteral("SCALE 1"), QStringLiteral("  12.5")});
    }
    folder.write(QStringLiteral("temp.mdb"), "stale left-over from a crash");

    Startup s(folder);
    QVERIFY(s.main.run());

    QVERIFY(!folder.exists(QStringLiteral("temp.mdb")));
    QCOMPARE(
        s.dialogs.said,
        (QStringList{QStringLiteral("busy"), QStringLiteral("idle"), QStringLiteral("frame loaded"),
                     QStringLiteral("frame shown"), QStringLiteral("loadsettings")}));
    core::Connection c = core::Connection::open(core::connectionText(folder.path()));
    QSqlQuery q = c.run(QStringLiteral("select Reading from datacol"));
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toString(), QStringLiteral("  12.5"));
    QVERIFY(!q.next());
    QCOMPARE(s.m.datapath, folder.path());
    QCOMPARE(s.m.dataconn, core::connectionText(folder.path()));
    QCOMPARE(s.m.cfgconn, s.m.dataconn);
    QCOMPARE(s.m.commtype, QStringLiteral("RS232"));
}

void Startup_::start_cfgFolderWithComma_usesThePartBeforeIt() {
    TempHome program;
    TempHome data;
    core::createDatabase(data.path());
    program.write(QStringLiteral("cfg.txt"), data.path().toLocal8Bit() + ",elsewhere\n");

    Startup s(program);
    QVERIFY(s.main.run());
    QCOMPARE(s.m.datapath, data.path());
    QCOMPARE(s.dialogs.texts(), QStringList{couldNotOpen(program)});
}

void Startup_::start_chooserPicksFolder_takesEffect() {
    TempHome program;
    TempHome data;
    core::createDatabase(data.path());
    program.write(QStringLiteral("cfg.txt"), "/nowhere/at/all\n");
    setSysCfg(data.path(), QStringLiteral("commtype"), QStringLiteral("USB485"));

    Startup s(program);
    s.chooseFolder = [&](core::Getdatapath& chooser) {
        chooser.Dir1_Change(data.path());
        chooser.Command1_Click();
    };
    QVERIFY(s.main.run());
    QCOMPARE(s.m.datapath, data.path());
    QCOMPARE(s.m.commtype, QStringLiteral("USB485"));
    QCOMPARE(program.read(QStringLiteral("cfg.txt")), data.path().toLocal8Bit() + '\n');
}

// Nothing can be made where a file stands in for the program's folder, whoever runs the test.
void Startup_::start_lockCannotBeMade_isFatalNamingTheFolder() {
    TempHome folder;
    folder.write(QStringLiteral("home"), "a file where the program's folder should be");
    Startup s(folder.file(QStringLiteral("home")));
    try {
        s.main.run();
        QFAIL("started without a lock");
    } catch (const core::FatalError& error) {
        QVERIFY2(
            error.text().contains(QDir::toNativeSeparators(folder.file(QStringLiteral("home")))),
            qPrintable(error.text()));
    }
    QCOMPARE(s.dialogs.said, QStringList{});
}

void Startup_::loadsettings_values_data() {
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<double>("netpolltime"); // NaN: the load is fatal
    QTest::addColumn<double>("netdeltime");

    const double fatal = qQNaN();
    QTest::newRow("defaults as created") << QString() << QVariant() << 0.33 << 0.01;
    QTest::newRow("netpolltime null") << "netpolltime" << QVariant() << 0.33 << 0.01;
    QTest::newRow("netpolltime empty text")
        << "netpolltime" << QVariant(QString("")) << 0.33 << 0.01;
    QTest::newRow("netpolltime 2") << "netpolltime" << QVariant(2) << 2.0 << 0.01;
    QTest::newRow("netpolltime as text") << "netpolltime" << QVariant(QString(".5")) << 0.5 << 0.01;
    QTest::newRow("netpolltime not a number")
        << "netpolltime" << QVariant(QString("fast")) << fatal << fatal;
    QTest::newRow("netdeltime null") << "netdeltime" << QVariant() << 0.33 << 0.01;
    QTest::newRow("netdeltime 0.05") << "netdeltime" << QVariant(0.05) << 0.33 << 0.05;
    QTest::newRow("commport null is fatal") << "commport" << QVariant() << fatal << fatal;
    QTest::newRow("commport out of range is fatal")
        << "commport" << QVariant(70000) << fatal << fatal;
}

void Startup_::loadsettings_values() {
    QFETCH(QString, field);
    QFETCH(QVariant, stored);
    QFETCH(double, netpolltime);
    QFETCH(double, netdeltime);

    TempHome folder;
    core::createDatabase(folder.path());
    if (!field.isEmpty()) {
        setSysCfg(folder.path(), field, stored);
    }
    setSysCfg(folder.path(), QStringLiteral("usbreset"), 9);
    core::Module1 m;
    m.cfgconn = core::connectionText(folder.path());
    if (qIsNaN(netpolltime)) {
        try {
            core::loadsettings(m);
            QFAIL("loadsettings should have been fatal");
        } catch (const core::FatalError& error) {
            QVERIFY2(error.text().contains(field), qPrintable(error.text()));
        }
        return;
    }
    core::loadsettings(m);
    QCOMPARE(m.netpolltime, netpolltime);
    QCOMPARE(m.netdeltime, netdeltime);
    QCOMPARE(m.commtype, QStringLiteral("RS232"));
    QCOMPARE(m.commsettings, QStringLiteral("9600,N,8,1"));
    QCOMPARE(m.commport, 1);
    QCOMPARE(m.rfnet, 0);
    QCOMPARE(m.rfnetid, QStringLiteral("0"));
    // usbreset is stored and shown, never loaded.
    QCOMPARE(m.usbreset, 0);
}

// Every key a value of its own, so that a key read from another's column shows; the columns
// that belong to others (usbreset, the slave layout) are gone from the record.
void Startup_::loadsettings_takesEachKeyFromItsOwnColumnAndNoOther() {
    TempHome folder;
    core::createDatabase(folder.path());
    const QList<std::pair<QString, QVariant>> stored = {
        {"commtype", "USB485"}, {"commport", 3},      {"rfnet", 5},
        {"smallfonts", 7},      {"rfnetid", "4"},     {"tagblz", 11},
        {"netpolltime", 1.5},   {"netdeltime", 0.07}, {"datacolenbstart", -1}};
    for (const auto& [field, value] : stored) {
        setSysCfg(folder.path(), field, value);
    }
    {
        core::Connection c = core::Connection::open(core::connectionText(folder.path()));
        QStringList others{QStringLiteral("usbreset")};
        for (int k = 0; k < 9; ++k) {
            for (const char* what : {"enb", "left", "top"}) {
                others << QStringLiteral("slave%1%2").arg(k).arg(QLatin1String(what));
            }
        }
        for (const QString& column : others) {
            c.run(QStringLiteral("alter table syscfg drop column ") + column);
        }
    }
    core::Module1 m;
    m.cfgconn = core::connectionText(folder.path());
    core::loadsettings(m);
    QCOMPARE(m.commtype, QStringLiteral("USB485"));
    QCOMPARE(m.commport, 3);
    QCOMPARE(m.rfnet, 5);
    QCOMPARE(m.smallfonts, 7);
    QCOMPARE(m.rfnetid, QStringLiteral("4"));
    QCOMPARE(m.tagblz, 11);
    QCOMPARE(m.netpolltime, 1.5);
    QCOMPARE(m.netdeltime, 0.07);
    QCOMPARE(m.datacolenbstart, core::vbTrue);
    QCOMPARE(m.commsettings, QStringLiteral("9600,N,8,1"));
}

// Places in twips at 96 dots per inch (15 twips a pixel) on a screen of 1000 x 800 at 0, 0.
void Startup_::frame_placeFromSettings_liesOnTheScreen_data() {
    QTest::addColumn<QList<int>>("twips"); // left, top, width, height
    QTest::addColumn<QRect>("pixels");
    const int big = std::numeric_limits<int>::max();
    const int small = std::numeric_limits<int>::min();
    QTest::newRow("inside stays") << QList<int>{1500, 3000, 6000, 4500}
                                  << QRect(100, 200, 400, 300);
    QTest::newRow("off to the right and below comes back")
        << QList<int>{30000, 30000, 6000, 4500} << QRect(600, 500, 400, 300);
    QTest::newRow("off to the left and above comes back")
        << QList<int>{-9000, -9000, 6000, 4500} << QRect(0, 0, 400, 300);
    QTest::newRow("larger than the screen fits it")
        << QList<int>{0, 0, 60000, 60000} << QRect(0, 0, 1000, 800);
    QTest::newRow("too small to use grows") << QList<int>{0, 0, 15, 0} << QRect(0, 0, 200, 200);
    QTest::newRow("the int's limits") << QList<int>{big, small, big, big} << QRect(0, 0, 1000, 800);
    QTest::newRow("the int's limits, other way")
        << QList<int>{small, big, small, small} << QRect(0, 600, 200, 200);
}

void Startup_::frame_placeFromSettings_liesOnTheScreen() {
    QFETCH(QList<int>, twips);
    QFETCH(QRect, pixels);
    QCOMPARE(app::FrmMainView::visiblePlace(twips[0], twips[1], twips[2], twips[3], 96, 96,
                                            QRect(0, 0, 1000, 800)),
             pixels);
}

void Startup_::frame_closedMinimized_keepsPlace_data() {
    QTest::addColumn<bool>("minimized");
    QTest::newRow("normal close writes the place") << false;
    QTest::newRow("minimized close keeps the old place") << true;
}

void Startup_::frame_closedMinimized_keepsPlace() {
    QFETCH(bool, minimized);
    TempHome folder;
    core::Module1 m;
    RecordingDialogs dialogs;
    {
        core::SettingsStore settings(folder.file(QStringLiteral("stellwyn.ini")));
        settings.saveSetting(QStringLiteral("Settings"), QStringLiteral("MainLeft"),
                             QStringLiteral("111"));
        settings.saveSetting(QStringLiteral("Settings"), QStringLiteral("MainWidth"),
                             QStringLiteral("9000"));
    }
    core::SettingsStore settings(folder.file(QStringLiteral("stellwyn.ini")));
    app::FrmMain frame(m, dialogs, settings);
    frame.MDIForm_Load();
    QCOMPARE(frame.left(), 111);
    QCOMPARE(frame.top(), 1000);
    QCOMPARE(frame.width(), 9000);
    QCOMPARE(frame.height(), 6500);

    app::FrmMainView view(frame);
    view.applyPlace();
    view.show();
    view.resize(640, 480);
    if (minimized) {
        view.showMinimized();
    }
    view.close();

    core::SettingsStore after(folder.file(QStringLiteral("stellwyn.ini")));
    const QString width =
        after.getSetting(QStringLiteral("Settings"), QStringLiteral("MainWidth"), {});
    const QString height =
        after.getSetting(QStringLiteral("Settings"), QStringLiteral("MainHeight"), {});
    if (minimized) {
        QCOMPARE(width, QStringLiteral("9000"));
        QCOMPARE(height, QString());
        QCOMPARE(after.getSetting(QStringLiteral("Settings"), QStringLiteral("MainLeft"), {}),
                 QStringLiteral("111"));
    } else {
        const int dpi = view.logicalDpiX();
        QCOMPARE(width, QString::number(qRound(640 * 1440.0 / dpi)));
        QVERIFY(!height.isEmpty());
    }
}

void Startup_::frame_setupMenu_refusedWhileScreenUp_data() {
    QTest::addColumn<int>("formactive");
    QTest::newRow("screen down opens Setup then reloads") << 0;
    QTest::newRow("screen up refuses") << -1;
}

void Startup_::frame_setupMenu_refusedWhileScreenUp() {
    QFETCH(int, formactive);
    TempHome folder;
    core::Module1 m;
    m.formactive = static_cast<std::int16_t>(formactive);
    RecordingDialogs dialogs;
    core::SettingsStore settings(folder.file(QStringLiteral("stellwyn.ini")));
    app::FrmMain frame(m, dialogs, settings);
    frame.showSetupModal = [&] { dialogs.said << QStringLiteral("setup shown"); };
    frame.loadsettings = [&] { dialogs.said << QStringLiteral("loadsettings"); };
    frame.mnu_setups_Click();
    if (formactive == 0) {
        QCOMPARE(dialogs.said, (QStringList{"setup shown", "loadsettings"}));
    } else {
        QCOMPARE(
            dialogs.said,
            QStringList{QStringLiteral(
                "message: \\n This form can not be loaded while the scale screen is activated."
                "\\nUse the EXIT button on the scale screen to shut it down, then open the "
                "\\ncommunications screen to make your changes, save them and\\nthen reload the "
                "scale screen to activate the changes")});
    }
    QCOMPARE(m.formactive, formactive);
}

QTEST_MAIN(Startup_)
void Startup_::demo_loadsMoveOnTheLineClock() {
    // The line's clock is the monotonic one; loads timed on the wall clock would be due in
    // decades, and the demonstration would show 0.0 for good.
    core::VirtualClock clock(QDateTime(QDate(2026, 11, 24), QTime(9, 0)));
    links::SimFtdi ftdi({130, 131, 132}, clock);
    app::startDemoMotion(ftdi, clock);
    clock.advance(12.0);
    ftdi.bus().advanceTo(sim::lineSeconds(clock));
    int loaded = 0;
    for (const auto& indicator : ftdi.bus().indicators()) {
        loaded += indicator->weight().valueAt(sim::lineSeconds(clock)) > 0.0 ? 1 : 0;
    }
    QVERIFY(loaded > 0);
}

#include "test_startup.moc"
