// The composition root: builds the one Module1, the dialogs, the settings store and the frame,
// hands them to each part, and runs the start-up.
#include "Main.h"

#include "CollectorExec.h"
#include "CommandLine.h"
#include "DemoHome.h"
#include "FrmAboutView.h"
#include "FrmMain.h"
#include "FrmMainView.h"
#include "StellwynApplication.h"
#include "Version.h"
#include "collection/ReadingExport.h"
#include "collection/SpreadsheetFactory.h"
#include "core/AppHome.h"
#include "core/CfgTxt.h"
#include "core/Clock.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"
#include "core/GetdatapathView.h"
#include "core/LoadSettings.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/Setup.h"
#include "core/SetupView.h"
#include "core/WidgetDialogsView.h"
#include "core/Yield.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/ReadingServer.h"
#include "display/Form1.h"
#include "display/Form1Commands.h"
#include "display/Form1Host.h"
#include "display/StatusLine.h"
#include "indicator_config/CapturingDialogs.h"
#include "indicator_config/ConfigOperations.h"
#include "links/FtdiApi.h"
#include "links/FtdiFactory.h"
#include "links/SerialPort.h"
#include "links/SerialPortFactory.h"
#include "links/UsbLink.h"
#include "sdmemory/LinuxDriveQueries.h"
#include "sdmemory/SdMemoryOptions.h"
#include "sdmemory/SdMemoryOptionsView.h"
#include "sdmemory/SdSetting.h"
#include "sdmemory/SdSettingView.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QTimer>
#include <cstdio>
#include <memory>

using namespace stellwyn;

namespace {

constexpr int linkStatusMs = 5000;

void printLine(FILE* stream, const QString& text) {
    std::fprintf(stream, "%s\n", qPrintable(text));
}

int createDatabase(const core::AppHome& home) {
    const core::CreateDatabaseResult result = core::createDatabase(home.folder());
    for (const QString& path : result.created) {
        printLine(stdout, QStringLiteral("created %1").arg(core::displayPath(path)));
    }
    for (const QString& path : result.leftAlone) {
        printLine(stdout, QStringLiteral("%1 already exists; it was left as it was")
                              .arg(core::displayPath(path)));
    }
    return 0;
}

// The readings of the data folder that cfg.txt names; without cfg.txt, the home's, as the first
// start would make it. Nothing is written to the home.
int exportReadings(const core::AppHome& home, const QString& file) {
    const QString cfg = home.file(QStringLiteral("cfg.txt"));
    const QString folder = core::cfgtxt::readFirstField(cfg).value_or(home.folder());
    const QString dataconn = core::connectionText(folder);
    if (!QFileInfo(core::dataSourceOf(dataconn)).isFile()) {
        printLine(stderr, QStringLiteral("stellwyn: no readings to export: %1 holds no svdata.mdb")
                              .arg(core::displayPath(folder)));
        return 1;
    }
    try {
        // A station whose readings go to a server exports its rows there.
        core::Connection connection = core::Connection::open(core::readingsConnectionText(
            dataconn, core::readingServerSetting(
                          core::SettingsStore(home.file(QStringLiteral("stellwyn.ini"))))));
        const qint64 rows =
            collection::exportReadings(connection, core::DataColOrder::storeOrder, file);
        printLine(stdout, QStringLiteral("exported %1 readings to %2")
                              .arg(rows)
                              .arg(core::displayPath(QFileInfo(file).absoluteFilePath())));
        return 0;
    } catch (const collection::ExportError& error) {
        printLine(stderr, QStringLiteral("stellwyn: ") + error.text());
    } catch (const core::FatalError& error) {
        printLine(stderr, QStringLiteral("stellwyn: ") + error.text());
    }
    return 1;
}

// Unattended, standard error carries the program's own messages one a line, for scripts to
// read; the toolkit's notes about the desktop it runs on would only get in their way. Only its
// criticals still pass. The program's own categories keep their defaults, and QT_LOGGING_RULES,
// read after these, still overrides them all.
const char* const kUnattendedLogRules = "default.debug=false\n"
                                        "default.info=false\n"
                                        "default.warning=false\n"
                                        "qt.*.debug=false\n"
                                        "qt.*.info=false\n"
                                        "qt.*.warning=false";

} // namespace

int main(int argc, char** argv) {
    core::usePlainEventLoop();
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    const QString version =
        QStringLiteral("%1.%2.%3").arg(versionMajor).arg(versionMinor).arg(versionRevision);

    // Options are settled before any toolkit starts, so that --help, --version and a bad
    // option need no display.
    const app::ParsedCommandLine parsed = app::parseCommandLine(arguments);
    if (parsed.wantsHelp) {
        std::fputs(qPrintable(app::helpText()), stdout);
        return 0;
    }
    if (parsed.wantsVersion) {
        printLine(stdout, QStringLiteral("stellwyn ") + version);
        return 0;
    }
    if (!parsed.options) {
        printLine(stderr, QStringLiteral("stellwyn: ") + parsed.error);
        return 2;
    }
    const app::CommandLine& options = *parsed.options;
    if (options.headless) {
        return app::execCollector(options.collectorArguments);
    }

    const core::AppHome home(options.demo ? app::demoHomeFolder(options.home, options.demoEthernet)
                                          : core::AppHome::resolve(options.home));
    if (!home.ensureExists()) {
        printLine(stderr, QStringLiteral("stellwyn: cannot make the application home %1")
                              .arg(core::displayPath(home.folder())));
        return 1;
    }

    if (options.createDatabase) {
        QCoreApplication tool(argc, argv);
        try {
            return createDatabase(home);
        } catch (const core::FatalError& error) {
            printLine(stderr, QStringLiteral("stellwyn: ") + error.text());
            return 1;
        }
    }

    if (!options.exportFile.isEmpty()) {
        QCoreApplication tool(argc, argv);
        return exportReadings(home, options.exportFile);
    }

    if (options.unattended) {
        QLoggingCategory::setFilterRules(QString::fromLatin1(kUnattendedLogRules));
        // Unattended runs need no display at all.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
    }
    app::StellwynApplication application(argc, argv);
    QApplication::setApplicationName(app::FrmMain::caption());
    QApplication::setApplicationVersion(version);

    std::unique_ptr<core::Dialogs> dialogs;
    core::WidgetDialogs* widgetDialogs = nullptr;
    if (options.unattended) {
        dialogs = std::make_unique<core::UnattendedDialogs>(options.answerYes);
    } else {
        auto owned = std::make_unique<core::WidgetDialogs>();
        widgetDialogs = owned.get();
        dialogs = std::move(owned);
    }
    // A command from another program tells its client what the program said while it ran.
    auto capturing = std::make_unique<indicator_config::CapturingDialogs>(std::move(dialogs));
    indicator_config::CapturingDialogs& commandDialogs = *capturing;
    dialogs = std::move(capturing);
    application.setFatalHandler([&dialogs](const QString& text) { dialogs->fatal(text); });

    core::Module1 m;
    core::RealClock clock;
    std::unique_ptr<app::EthernetDemo> ethernetDemo;
    if (options.demo) {
        try {
            app::prepareDemoHome(home, options.demoEthernet);
        } catch (const core::FatalError& error) {
            application.fatal(error.text());
            return 1;
        }
        if (options.demoEthernet) {
            ethernetDemo = std::make_unique<app::EthernetDemo>(clock);
            QString error;
            if (!ethernetDemo->start(home, &error)) {
                printLine(stderr, QStringLiteral("stellwyn: the demonstration's scales cannot "
                                                 "listen on the loopback: ") +
                                      error);
                return 1;
            }
        }
    }
    core::SettingsStore settings(home.file(QStringLiteral("stellwyn.ini")));
    // The USB library and link live as long as the program: the adapter stays open between
    // uses of the main screen. They are made at the first use of the screen.
    std::unique_ptr<links::FtdiApi> ftdi;
    std::unique_ptr<links::UsbLink> usb;
    const std::unique_ptr<collection::SpreadsheetApp> spreadsheet =
        collection::makeSpreadsheetApp();

    app::FrmMain frame(m, *dialogs, settings);
    std::unique_ptr<app::FrmMainView> frameView;
    frame.loadsettings = [&m] { core::loadsettings(m); };
    frame.endProcess = [] { QCoreApplication::exit(0); };
    frame.usb_close = [&usb] {
        if (usb) {
            usb->usb_close();
        }
    };
    QObject::connect(&frame, &app::FrmMain::showAbout, [&] {
        app::FrmAboutView about(*dialogs, frameView.get());
        about.exec();
    });

    // The Setup screen, modal over the frame. Unattended it cannot be shown, so, as a modal
    // chooser does there, it counts as cancelled: it loads (with its messages and the writes
    // of its load) and closes at once.
    sdmemory::LinuxDriveQueries driveQueries;
    frame.showSetupModal = [&] {
        core::Setup setup(m, *dialogs, home, settings);
        setup.showGetdatapath = [](core::Getdatapath& chooser) {
            core::GetdatapathView view(chooser, QApplication::activeModalWidget());
            view.exec();
        };
        sdmemory::SdMemoryOptions sdOptions(m, *dialogs, driveQueries);
        setup.findSdMemory = [&sdOptions](core::Setup&) { sdOptions.discover(); };
        sdOptions.showSdSetting = [&] {
            sdmemory::SdSetting form(m, *dialogs, driveQueries);
            form.Form_Load();
            sdmemory::SdSettingView view(form, QApplication::activeModalWidget());
            view.exec();
        };
        if (!setup.Form_Load()) {
            return;
        }
        if (!dialogs->interactive()) {
            setup.Cancel_Click();
            return;
        }
        core::SetupView view(setup, frameView.get());
        sdmemory::SdMemoryOptionsView sdView(sdOptions, view.sdMemoryGroup());
        view.exec();
    };

    app::Main start(m, *dialogs, home);
    start.loadFrame = [&] {
        frameView = std::make_unique<app::FrmMainView>(frame);
        frame.MDIForm_Load();
        frameView->applyPlace();
        if (widgetDialogs != nullptr) {
            widgetDialogs->setOwner(frameView.get());
        }
    };
    start.showFrame = [&] { frameView->show(); };
    start.showGetdatapath = [&](core::Getdatapath& chooser) {
        core::GetdatapathView view(chooser, frameView.get());
        view.exec();
    };
    start.loadsettings = [&m] { core::loadsettings(m); };

    const auto showStatus = [&frameView, &dialogs](const QString& text) {
        if (frameView) {
            frameView->showStatus(text);
        }
        // Unattended, the status bar is out of sight: its lines go where the messages go.
        if (!dialogs->interactive()) {
            std::fprintf(stderr, "status: %s\n", qPrintable(text));
        }
    };
    std::unique_ptr<display::Form1Host> screen;
    auto makeForm1 = [&]() {
        if (!ftdi) {
            ftdi = links::makeFtdiApi(settings, showStatus, clock);
            usb = std::make_unique<links::UsbLink>(m, *ftdi, *dialogs);
            if (options.demo) {
                app::startDemoMotion(*ftdi, clock);
            }
        }
        display::Form1Services services{m,
                                        *dialogs,
                                        clock,
                                        home,
                                        [&settings] { return links::makeSerialPort(settings); },
                                        ftdi.get(),
                                        usb.get(),
                                        {},
                                        spreadsheet.get()};
        display::Form1Calls calls;
        calls.showStatus = showStatus;
        auto form = std::make_unique<display::Form1>(std::move(services), std::move(calls));
        display::serveCommands(*form, home, *dialogs, commandDialogs);
        return form;
    };

    int status = 0;
    try {
        if (!start.run()) {
            return 0;
        }
        screen = std::make_unique<display::Form1Host>(*frameView->mdiArea(), makeForm1);
        QObject::connect(&frame, &app::FrmMain::activateRemoteScreen, screen.get(),
                         &display::Form1Host::show);
        // The link and today's readings at a glance; the collector logs the same line.
        const auto showLinkStatus = [&] {
            frameView->showLinkStatus(display::statusLine(
                display::linkState(m, screen->form(), settings), m.readingsconn, clock));
        };
        QTimer linkStatus;
        QObject::connect(&linkStatus, &QTimer::timeout, showLinkStatus);
        linkStatus.start(linkStatusMs);
        showLinkStatus();
        if (options.setup) {
            frame.mnu_setups_Click();
        }
        if (options.activate || options.demo) {
            frame.m_ars_Click();
        }
        status = QApplication::exec();
    } catch (const core::FatalError& error) {
        application.fatal(error.text());
    }
    frame.MDIForm_Terminate();
    screen.reset();
    if (widgetDialogs != nullptr) {
        widgetDialogs->setOwner(nullptr);
    }
    frameView.reset();
    return status;
}
