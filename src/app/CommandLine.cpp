#include "CommandLine.h"

#include <QCommandLineParser>

namespace stellwyn::app {

namespace {

const QString demoEthernet = QStringLiteral("--demo=ethernet");

// The options QGuiApplication and QApplication take out of the arguments themselves, with one
// or two dashes. They are known here only so that they are not refused before the toolkit
// starts; the help leaves them to Qt's documentation.
const char* const qtValueOptions[] = {
    "platform",    "platformpluginpath", "platformtheme", "plugin",     "qwindowgeometry",
    "qwindowicon", "qwindowtitle",       "style",         "stylesheet", "session",
    "display",     "geometry",           "qmljsdebugger"};
const char* const qtFlagOptions[] = {"reverse", "widgetcount", "nograb", "dograb", "sync"};

struct Options {
    QCommandLineOption home{QStringLiteral("home"),
                            QStringLiteral("Application home (default: $STELLWYN_HOME, else the "
                                           "user's data folder); holds cfg.txt, stellwyn.ini, "
                                           "sccfg.mdb."),
                            QStringLiteral("DIR")};
    QCommandLineOption createDatabase{
        QStringLiteral("create-database"),
        QStringLiteral("Make svdata.mdb and sccfg.mdb in the home and exit; existing files are "
                       "never overwritten.")};
    QCommandLineOption unattended{
        QStringLiteral("unattended"),
        QStringLiteral("Show no dialog: messages go to standard error, one a line.")};
    QCommandLineOption answer{QStringLiteral("answer"),
                              QStringLiteral("The answer to every Yes/No question when "
                                             "unattended: yes or no (default: no)."),
                              QStringLiteral("yes|no")};
    QCommandLineOption activate{QStringLiteral("activate"),
                                QStringLiteral("Open the main screen at start-up.")};
    QCommandLineOption setup{
        QStringLiteral("setup"),
        QStringLiteral("Open the Setup screen at start-up (before the main screen when "
                       "--activate is given too); unattended, it loads, writes its settings and "
                       "closes at once.")};
    QCommandLineOption demo{
        QStringLiteral("demo"),
        QStringLiteral("Run on a demonstration home (made when missing: --home, else demo/ in "
                       "the user's data folder) whose three simulated scales, NetIDs 130 to "
                       "132, show on the main screen. --demo=ethernet: the same over Ethernet, "
                       "two simulated scales, NetIDs 130 and 131, behind a loopback port of "
                       "this program (home: demo-ethernet/ unless --home).")};
    QCommandLineOption exportFile{
        QStringLiteral("export"),
        QStringLiteral("Write the kept readings (datacol, in stored order) to FILE, CSV or XLSX "
                       "by its extension, and exit; the program may be running meanwhile."),
        QStringLiteral("FILE")};
    QCommandLineOption headless{
        QStringLiteral("headless"),
        QStringLiteral("Collect with no window and no display, as stellwyn-collector: the link "
                       "and mode of the settings, readings stored, messages to standard "
                       "error.")};
    QCommandLineOption log{QStringLiteral("log"),
                           QStringLiteral("With --headless: append the log to FILE instead of "
                                          "standard error."),
                           QStringLiteral("FILE")};
    QCommandLineOption version{QStringLiteral("version"),
                               QStringLiteral("Print the version and exit.")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Print this help and exit.")};

    void addTo(QCommandLineParser& parser) const {
        parser.setApplicationDescription(
            QStringLiteral("Works weighing-scale indicators from this computer.\nQt's own "
                           "options (-platform, -style, ...) are accepted as well."));
        // Qt's options come with one dash, as in -platform offscreen.
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.addOptions({home, createDatabase, unattended, answer, activate, setup, demo,
                           exportFile, headless, log, version, help});
        for (const char* name : qtValueOptions) {
            QCommandLineOption option(QString::fromLatin1(name), QString(),
                                      QStringLiteral("value"));
            option.setFlags(QCommandLineOption::HiddenFromHelp);
            parser.addOption(option);
        }
        for (const char* name : qtFlagOptions) {
            QCommandLineOption option(QString::fromLatin1(name));
            option.setFlags(QCommandLineOption::HiddenFromHelp);
            parser.addOption(option);
        }
    }
};

} // namespace

QString helpText() {
    QCommandLineParser parser;
    Options().addTo(parser);
    QString text = parser.helpText();
    // Settled before any application object exists, which is where the parser looks for the
    // program's name.
    text.replace(QStringLiteral("<executable_name>"), QStringLiteral("stellwyn"));
    return text;
}

ParsedCommandLine parseCommandLine(const QStringList& arguments) {
    ParsedCommandLine parsed;
    const Options o;
    QCommandLineParser parser;
    o.addTo(parser);

    // "--demo" with an optional value is not a form the parser knows; that one value is taken
    // here and the rest goes through the parser.
    QStringList rest{QStringLiteral("stellwyn")};
    bool ethernet = false;
    for (const QString& arg : arguments) {
        if (arg.startsWith(QStringLiteral("--demo="))) {
            if (arg != demoEthernet) {
                parsed.error = QStringLiteral("--demo= takes ethernet, not \"%1\"").arg(arg.mid(7));
                return parsed;
            }
            ethernet = true;
        } else {
            rest << arg;
        }
    }
    if (!parser.parse(rest)) {
        parsed.error = parser.errorText() + QStringLiteral(" (try --help)");
        return parsed;
    }
    if (!parser.positionalArguments().isEmpty()) {
        parsed.error = QStringLiteral("unknown option \"%1\" (try --help)")
                           .arg(parser.positionalArguments().front());
        return parsed;
    }
    parsed.wantsHelp = parser.isSet(o.help);
    parsed.wantsVersion = parser.isSet(o.version);

    CommandLine options;
    options.home = parser.value(o.home);
    options.createDatabase = parser.isSet(o.createDatabase);
    options.unattended = parser.isSet(o.unattended);
    options.activate = parser.isSet(o.activate);
    options.setup = parser.isSet(o.setup);
    options.demo = parser.isSet(o.demo) || ethernet;
    options.demoEthernet = ethernet;
    options.exportFile = parser.value(o.exportFile);
    options.headless = parser.isSet(o.headless);
    if (parser.isSet(o.answer)) {
        const QString answer = parser.value(o.answer);
        if (answer != u"yes" && answer != u"no") {
            parsed.error = QStringLiteral("--answer takes yes or no, not \"%1\"").arg(answer);
            return parsed;
        }
        options.answerYes = answer == u"yes";
    }
    if (parser.isSet(o.log) && !options.headless) {
        parsed.error = QStringLiteral("--log goes with --headless");
        return parsed;
    }
    if (options.headless) {
        // The collector knows the home and the log; the screen's other options have no
        // meaning without a screen.
        for (const QCommandLineOption* screenOnly :
             {&o.createDatabase, &o.unattended, &o.answer, &o.activate, &o.setup, &o.demo,
              &o.exportFile}) {
            if (parser.isSet(*screenOnly) || (screenOnly == &o.demo && ethernet)) {
                parsed.error = QStringLiteral("--%1 does not go with --headless")
                                   .arg(screenOnly->names().constFirst());
                return parsed;
            }
        }
        if (parser.isSet(o.home)) {
            options.collectorArguments << QStringLiteral("--home") << options.home;
        }
        if (parser.isSet(o.log)) {
            options.collectorArguments << QStringLiteral("--log") << parser.value(o.log);
        }
    }
    parsed.options = options;
    return parsed;
}

} // namespace stellwyn::app
