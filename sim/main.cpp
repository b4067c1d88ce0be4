#include "Bus.h"
#include "FrameLog.h"
#include "PtyServer.h"
#include "RfModule.h"
#include "SimOptions.h"
#include "TcpServer.h"
#include "WireTime.h"
#include "core/Clock.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

using namespace stellwyn;

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char b = 1;
    [[maybe_unused]] const auto n = ::write(signalPipe[1], &b, 1);
}

// SIGTERM and SIGINT end the event loop, so that the link and the log are tidied up.
std::unique_ptr<QSocketNotifier> quitOnSignals() {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0) {
        return nullptr;
    }
    auto notifier = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    struct sigaction sa {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);
    return notifier;
}

void say(const QString& line) {
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

void complain(const QString& line) {
    std::fputs(qPrintable(QStringLiteral("stellwyn-sim: ") + line + QLatin1Char('\n')), stderr);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("stellwyn-sim"));

    sim::SimOptions options;
    QString error;
    if (!sim::parseSimOptions(app.arguments(), &options, &error)) {
        complain(error);
        return 2;
    }
    if (options.help) {
        std::fputs(qPrintable(sim::simUsage()), stdout);
        return 0;
    }
    if (!options.klPath.isEmpty()) {
        if (!sim::writeKlDat(options.klPath, options.kl, &error)) {
            complain(options.klPath + QStringLiteral(": ") + error);
            return 1;
        }
        return 0;
    }

    core::RealClock clock;
    const sim::Scenario& scenario = options.scenario;
    sim::Bus bus(scenario.mode);
    const double origin = sim::lineSeconds(clock);
    scenario.populate(bus, origin);

    QFile logFile(options.logPath);
    std::unique_ptr<sim::FrameLog> log;
    if (!options.logPath.isEmpty()) {
        if (!logFile.open(QIODevice::WriteOnly | QIODevice::Append)) {
            complain(options.logPath + QStringLiteral(": ") + logFile.errorString());
            return 1;
        }
        log = std::make_unique<sim::FrameLog>(logFile, origin);
        log->attach(bus);
    }

    std::unique_ptr<sim::RfModule> rf;
    sim::LineDevice* device = &bus;
    if (scenario.hasRf()) {
        rf = std::make_unique<sim::RfModule>(bus, scenario.rfChannel);
        device = rf.get();
    }

    const auto signalWatch = quitOnSignals();

    std::unique_ptr<sim::PtyServer> pty;
    if (options.pty) {
        pty = std::make_unique<sim::PtyServer>(*device, clock);
        // Paced both ways: a request reaches the indicator only after its bytes' wire time.
        pty->setByteTime(scenario.pace ? sim::kByteTime9600 : 0.0);
        if (!pty->open()) {
            complain(pty->errorString());
            return 1;
        }
        if (!options.linkPath.isEmpty() && !pty->linkAs(options.linkPath)) {
            complain(pty->errorString());
            return 1;
        }
        say(pty->slavePath());
    }
    std::unique_ptr<sim::TcpServer> tcp;
    if (options.tcpPort >= 0) {
        tcp = std::make_unique<sim::TcpServer>(*device, clock);
        if (!tcp->listen(static_cast<quint16>(options.tcpPort))) {
            complain(tcp->errorString());
            return 1;
        }
        say(QStringLiteral("tcp %1").arg(tcp->port()));
    }
    return QCoreApplication::exec();
}
