#include "CommandLine.h"

namespace stellwyn::app {

QString helpText() {
    return QStringLiteral(
        "Usage: stellwyn [options]\n"
        "Works weighing-scale indicators from this computer.\n"
        "\n"
        "Options:\n"
        "  --home DIR          application home (default: $STELLWYN_HOME, else the user's\n"
        "                      data folder); holds cfg.txt, stellwyn.ini, sccfg.mdb\n"
        "  --create-database   make svdata.mdb and sccfg.mdb in the home and exit;\n"
        "                      existing files are never overwritten\n"
        "  --unattended        show no dialog: messages go to standard error, one a line\n"
        "  --answer yes|no     the answer to every Yes/No question when unattended\n"
        "                      (default: no)\n"
        "  --activate          open the main screen at start-up\n"
        "  --setup             open the Setup screen at start-up (before the main screen\n"
        "                      when --activate is given too); unattended, it loads, writes\n"
        "                      its settings and closes at once\n"
        "  --demo              run on a demonstration home (made when missing: --home,\n"
        "                      else demo/ in the user's data folder) whose three simulated\n"
        "                      scales, NetIDs 130 to 132, show on the main screen\n"
        "  --demo=ethernet     the same over Ethernet: two simulated scales, NetIDs 130 and\n"
        "                      131, behind a loopback port of this program (home:\n"
        "                      demo-ethernet/ in the user's data folder unless --home)\n"
        "  --export FILE       write the kept readings (datacol, in stored order) to FILE,\n"
        "                      CSV or XLSX by its extension, and exit; the program may be\n"
        "                      running meanwhile\n"
        "  --version           print the version and exit\n"
        "  --help              print this help and exit\n");
}

ParsedCommandLine parseCommandLine(const QStringList& arguments) {
    ParsedCommandLine parsed;
    CommandLine options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& arg = arguments[i];
        auto value = [&](const QString& name) -> std::optional<QString> {
            if (arg.startsWith(name + u'=')) {
                return arg.mid(name.size() + 1);
            }
            if (i + 1 < arguments.size()) {
                return arguments[++i];
            }
            parsed.error = QStringLiteral("%1 needs a value").arg(name);
            return std::nullopt;
        };
        if (arg == u"--help" || arg == u"-h") {
            parsed.wantsHelp = true;
        } else if (arg == u"--version") {
            parsed.wantsVersion = true;
        } else if (arg == u"--create-database") {
            options.createDatabase = true;
        } else if (arg == u"--unattended") {
            options.unattended = true;
        } else if (arg == u"--activate") {
            options.activate = true;
        } else if (arg == u"--setup") {
            options.setup = true;
        } else if (arg == u"--demo") {
            options.demo = true;
        } else if (arg.startsWith(u"--demo=")) {
            if (arg != u"--demo=ethernet") {
                parsed.error = QStringLiteral("--demo= takes ethernet, not \"%1\"").arg(arg.mid(7));
                return parsed;
            }
            options.demo = true;
            options.demoEthernet = true;
        } else if (arg == u"--home" || arg.startsWith(u"--home=")) {
            const auto home = value(QStringLiteral("--home"));
            if (!home) {
                return parsed;
            }
            options.home = *home;
        } else if (arg == u"--export" || arg.startsWith(u"--export=")) {
            const auto file = value(QStringLiteral("--export"));
            if (!file) {
                return parsed;
            }
            options.exportFile = *file;
        } else if (arg == u"--answer" || arg.startsWith(u"--answer=")) {
            const auto answer = value(QStringLiteral("--answer"));
            if (!answer) {
                return parsed;
            }
            if (*answer != u"yes" && *answer != u"no") {
                parsed.error = QStringLiteral("--answer takes yes or no, not \"%1\"").arg(*answer);
                return parsed;
            }
            options.answerYes = *answer == u"yes";
        } else {
            parsed.error = QStringLiteral("unknown option \"%1\" (try --help)").arg(arg);
            return parsed;
        }
    }
    parsed.options = options;
    return parsed;
}

} // namespace stellwyn::app
