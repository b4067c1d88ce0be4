// The headless composition root: the collector's own start-up over the logic libraries, with
// a core application (no display, no widgets) and the signals of a service.
#include "Collector.h"
#include "CollectorLog.h"
#include "ServiceNotifier.h"
#include "SignalPipe.h"
#include "Version.h"
#include "core/AppHome.h"
#include "core/FatalError.h"
#include "core/Yield.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace stellwyn;

namespace {

// An error that no routine trapped ends the collector as it ends the screen: its text once,
// then status 1, with everything stored already on disk.
class CollectorApplication : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QCoreApplication::notify(receiver, event);
        } catch (const core::FatalError& error) {
            fatal(error.text());
        } catch (const std::exception& error) {
            fatal(QString::fromLocal8Bit(error.what()));
        }
    }

    [[noreturn]] static void fatal(const QString& text) {
        collector::logLine(QStringLiteral("fatal"), text);
        std::fflush(nullptr);
        std::_Exit(1);
    }
};

} // namespace

int main(int argc, char** argv) {
    // A stop that comes while the toolkit starts is held until its handler is there, so that
    // even then the process ends cleanly.
    sigset_t held;
    sigemptyset(&held);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&held, number);
    }
    ::sigprocmask(SIG_BLOCK, &held, nullptr);
    core::usePlainEventLoop();
    CollectorApplication application(argc, argv);
    collector::SignalPipe signals_;
    ::sigprocmask(SIG_UNBLOCK, &held, nullptr);
    QCoreApplication::setApplicationName(QStringLiteral("stellwyn-collector"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(versionMajor).arg(versionMinor).arg(versionRevision));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Collects readings from the scales with no window: the link and operating mode of the "
        "home's settings (section Collector of stellwyn.ini), readings stored as the main "
        "screen stores them, the command socket served. SIGTERM ends it, SIGHUP reads the "
        "settings again."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption homeOption(
        QStringLiteral("home"),
        QStringLiteral("Application home (default: $STELLWYN_HOME, else the user's data "
                       "folder)."),
        QStringLiteral("DIR"));
    const QCommandLineOption logOption(
        QStringLiteral("log"), QStringLiteral("Append the log to FILE instead of standard error."),
        QStringLiteral("FILE"));
    parser.addOptions({homeOption, logOption});
    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "stellwyn-collector: %s (try --help)\n",
                     qPrintable(parser.errorText()));
        return 2;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        std::printf("stellwyn-collector %s\n", qPrintable(QCoreApplication::applicationVersion()));
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        std::fprintf(stderr, "stellwyn-collector: unexpected argument \"%s\" (try --help)\n",
                     qPrintable(parser.positionalArguments().front()));
        return 2;
    }
    if (parser.isSet(logOption) && !collector::logToFile(parser.value(logOption))) {
        std::fprintf(stderr, "stellwyn-collector: cannot write the log %s: %s\n",
                     qPrintable(parser.value(logOption)), std::strerror(errno));
        return 1;
    }
    collector::installLogHandler();

    const core::AppHome home(core::AppHome::resolve(parser.value(homeOption)));
    if (!home.ensureExists()) {
        collector::logLine(QStringLiteral("fatal"),
                           QStringLiteral("cannot make the application home %1")
                               .arg(core::displayPath(home.folder())));
        return 1;
    }
    collector::logLine(QStringLiteral("collector"), QStringLiteral("%1 on the home %2")
                                                        .arg(QCoreApplication::applicationVersion(),
                                                             core::displayPath(home.folder())));

    collector::ServiceNotifier notifier;
    collector::Collector collector(home, notifier);
    QObject::connect(&signals_, &collector::SignalPipe::terminate, &collector,
                     &collector::Collector::stop);
    QObject::connect(&signals_, &collector::SignalPipe::hangUp, &collector,
                     &collector::Collector::reload);
    QObject::connect(&collector, &collector::Collector::finished, &application, [](int status) {
        collector::logLine(QStringLiteral("collector"),
                           QStringLiteral("ended with status %1").arg(status));
        QCoreApplication::exit(status);
    });
    // On the loop, so that a signal during the start-up is heard in its yields.
    QTimer::singleShot(0, &collector, [&collector] {
        try {
            collector.start();
        } catch (const core::FatalError& error) {
            CollectorApplication::fatal(error.text());
        }
    });
    return QCoreApplication::exec();
}
