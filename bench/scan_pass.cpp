// Network scan passes over ten scales, through the kernel FTDI backend and a pseudo-terminal to
// stellwyn-sim pacing its line at 9600 baud both ways: how close a pass comes to the time its
// bytes and waits need on the wire, and what it costs the processor, beside a plain poller
// written the obvious way (write, read until CR with a timeout, sleep the gap) on the same
// simulator in the same run, the two taking their passes in turns, a few at a time. Then the
// same with three scales silent.
//
//   scan_pass [--passes N] [--sim PATH]
#include "acquisition/AcquisitionContext.h"
#include "acquisition/ModeTimers.h"
#include "acquisition/Scanners.h"
#include "core/Clock.h"
#include "core/Dialogs.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/Yield.h"
#include "links/FtdiFactory.h"
#include "links/UsbLink.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace stellwyn;

namespace {

constexpr int scales = 10;
constexpr int firstNetId = 130;
constexpr int requestBytes = 3;
constexpr int replyBytes = 11;
constexpr double netdeltime = 0.01;
// The reply wait of a network scan, which a silent scale costs in full.
constexpr double replyWait = 0.25;

double cpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

// The part of the processor time spent in the kernel, on the process's behalf.
double systemSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_stime.tv_usec) / 1e6;
}

// Times the process gave up the processor, waiting or pushed off: each wakeup for bytes costs
// one, so this tells whether a reply costs the program more wakeups than the poller.
long contextSwitches() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw + usage.ru_nivcsw;
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

struct Figures {
    double medianPass = 0;
    double cpuPerPass = 0;
    double switchesPerPass = 0;
    double systemPerPass = 0;
};

struct RunFigures {
    Figures program;
    Figures plain;
};

double nowSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

// The passes of one side, taken a few at a time in turns with the other's, so that both meet the
// same moments of a machine that other work shares.
struct Samples {
    std::vector<double> times;
    std::vector<double> cpu;
    long switches = 0;
    double system = 0;

    template <typename Pass> void measure(const Pass& pass) {
        const long switchesStart = contextSwitches();
        const double start = nowSeconds();
        const double systemStart = systemSeconds();
        const double cpuStart = cpuSeconds();
        pass();
        cpu.push_back(cpuSeconds() - cpuStart);
        system += systemSeconds() - systemStart;
        times.push_back(nowSeconds() - start);
        switches += contextSwitches() - switchesStart;
    }
    Figures figures() const {
        const auto n = static_cast<double>(times.size());
        return {median(times), median(cpu), static_cast<double>(switches) / n, system / n};
    }
};

// The poller anyone would write first: for each scale, sleep the gap, write the request, read
// until CR or the reply wait is over.
void plainPoller(const QString& pty, int passes, Samples& into) {
    const int fd = ::open(pty.toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
    if (fd < 0) {
        std::fprintf(stderr, "scan_pass: the plain poller cannot open %s\n", qPrintable(pty));
        std::exit(1);
    }
    termios tio{};
    tcgetattr(fd, &tio);
    cfmakeraw(&tio);
    cfsetspeed(&tio, B9600);
    tcsetattr(fd, TCSANOW, &tio);
    const auto pass = [fd] {
        for (int i = 0; i < scales; ++i) {
            std::this_thread::sleep_for(std::chrono::duration<double>(netdeltime));
            const unsigned char request[] = {static_cast<unsigned char>(firstNetId + i), 0x11, '1'};
            if (::write(fd, request, sizeof request) != static_cast<ssize_t>(sizeof request)) {
                return;
            }
            const double end = nowSeconds() + replyWait;
            char buffer[64];
            bool done = false;
            while (!done) {
                const int left = static_cast<int>((end - nowSeconds()) * 1000.0);
                pollfd p{fd, POLLIN, 0};
                if (left <= 0 || ::poll(&p, 1, left) <= 0) {
                    break;
                }
                const ssize_t n = ::read(fd, buffer, sizeof buffer);
                for (ssize_t k = 0; k < n; ++k) {
                    done = done || buffer[k] == '\r';
                }
            }
        }
    };
    pass();
    for (int p = 0; p < passes; ++p) {
        into.measure(pass);
    }
    ::close(fd);
}

// The simulator runs detached, its path written to a file: a child watched through pipes would
// put the watch into every wait of the loop under measure, which no station has.
struct Simulator {
    qint64 pid = 0;
    QString pty;
};

// Starts the simulator with the given silent scales and waits for its pty path.
Simulator startSimulator(const QString& program, const QList<int>& silent,
                         const QString& pathFile) {
    QStringList ids;
    for (int i = 0; i < scales; ++i) {
        ids << QString::number(firstNetId + i);
    }
    QStringList args{QStringLiteral("--mode"), QStringLiteral("addressed"), QStringLiteral("--ids"),
                     ids.join(u','), QStringLiteral("--pace")};
    for (int id : silent) {
        args << QStringLiteral("--set") << QStringLiteral("fault %1 silence").arg(id);
    }
    QProcess sim;
    sim.setProgram(program);
    sim.setArguments(args);
    sim.setStandardOutputFile(pathFile, QIODevice::Truncate);
    Simulator started;
    if (!sim.startDetached(&started.pid)) {
        return {};
    }
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 10000) {
        QFile file(pathFile);
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray line = file.readLine();
            if (line.endsWith('\n')) {
                started.pty = QString::fromLocal8Bit(line).trimmed();
                return started;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ::kill(static_cast<pid_t>(started.pid), SIGTERM);
    return {};
}

RunFigures run(const QString& simProgram, const QList<int>& silent, int passes) {
    QTemporaryDir work;
    const Simulator sim =
        startSimulator(simProgram, silent, work.filePath(QStringLiteral("sim-path.txt")));
    const QString& pty = sim.pty;
    if (pty.isEmpty()) {
        std::fprintf(stderr, "scan_pass: stellwyn-sim did not start\n");
        std::exit(1);
    }
    core::SettingsStore settings(work.filePath(QStringLiteral("stellwyn.ini")));
    settings.saveSetting(QStringLiteral("USB"), QStringLiteral("Backend"),
                         QStringLiteral("kernel"));
    settings.saveSetting(QStringLiteral("USB"), QStringLiteral("Devices"), pty);

    core::RealClock clock;
    core::UnattendedDialogs dialogs(false);
    core::Module1 m;
    core::Form1Controls f;
    std::unique_ptr<links::FtdiApi> ftdi = links::makeFtdiApi(settings, {}, clock);
    links::UsbLink usb(m, *ftdi, dialogs);
    m.commtype = QStringLiteral("USB485");
    m.netdeltime = netdeltime;
    m.scalecount = scales;
    for (int i = 0; i < scales; ++i) {
        m.netid[i] = firstNetId + i;
        m.scaledesc[i] = QStringLiteral("SCALE %1").arg(firstNetId + i);
    }
    f.txt_polltime.text = QStringLiteral(".33");

    acquisition::AcquisitionContext context{m, f, clock, {nullptr, ftdi.get(), &usb}, {}};
    acquisition::Scanners scanners(context);
    acquisition::ModeTimers timers(context, scanners);

    Samples program;
    Samples plain;
    constexpr int rounds = 4;
    for (int round = 0; round < rounds; ++round) {
        const int inRound = passes / rounds + (round < passes % rounds ? 1 : 0);
        usb.usb_open();
        if (m.usbinitfail != 0) {
            std::fprintf(stderr, "scan_pass: the adapter on %s did not open\n", qPrintable(pty));
            std::exit(1);
        }
        timers.Timer1_Timer(0); // settles the line and the simulator before measuring
        for (int p = 0; p < inRound; ++p) {
            program.measure([&] { timers.Timer1_Timer(0); });
        }
        usb.usb_close();
        plainPoller(pty, inRound, plain);
    }
    ftdi.reset();
    ::kill(static_cast<pid_t>(sim.pid), SIGTERM);
    return {program.figures(), plain.figures()};
}

// False when the program's pass beats the wire (the floor is then no floor) or costs more
// processor than the plain poller.
bool report(const char* title, const RunFigures& figures, int answering) {
    const int silent = scales - answering;
    // A reply is taken at its CR; its LF is on the line during the next scale's gap. The reply
    // wait starts when the request is handed to the adapter, so a silent scale's request goes
    // out within its wait.
    const double wire = answering * (requestBytes + replyBytes - 1) * 10.0 / 9600.0 +
                        scales * netdeltime + silent * replyWait;
    const double ratio = figures.program.medianPass / wire;
    std::printf("%s\n", title);
    std::printf("  wire time            %8.1f ms  (%d request and %d reply bytes up to CR at 9600 "
                "baud, %.0f ms gap a scale, %d reply waits of %.0f ms)\n",
                wire * 1000.0, answering * requestBytes, answering * (replyBytes - 1),
                netdeltime * 1000.0, silent, replyWait * 1000.0);
    std::printf("  median pass          %8.1f ms   plain poller %8.1f ms\n",
                figures.program.medianPass * 1000.0, figures.plain.medianPass * 1000.0);
    std::printf("  pass / wire          %8.2f\n", ratio);
    std::printf("  processor a pass     %8.2f ms   plain poller %8.2f ms  (medians)\n",
                figures.program.cpuPerPass * 1000.0, figures.plain.cpuPerPass * 1000.0);
    std::printf("  of it in the kernel  %8.2f ms   plain poller %8.2f ms  (means)\n",
                figures.program.systemPerPass * 1000.0, figures.plain.systemPerPass * 1000.0);
    std::printf("  context switches     %8.1f a pass plain poller %8.1f\n",
                figures.program.switchesPerPass, figures.plain.switchesPerPass);
    const bool honest = ratio >= 1.0;
    const bool lean = figures.program.cpuPerPass <= figures.plain.cpuPerPass;
    std::printf("  %s, %s\n", honest ? "ratio >= 1.0" : "RATIO BELOW 1.0",
                lean ? "processor no higher than the plain poller's"
                     : "PROCESSOR ABOVE THE PLAIN POLLER'S");
    return honest && lean;
}

} // namespace

int main(int argc, char** argv) {
    // The event loop the program itself runs.
    core::usePlainEventLoop();
    QCoreApplication app(argc, argv);
    int passes = 20;
    QString simProgram = QCoreApplication::applicationDirPath() + QStringLiteral("/stellwyn-sim");
    const QStringList args = QCoreApplication::arguments();
    for (int i = 1; i + 1 < args.size(); ++i) {
        if (args[i] == u"--passes") {
            passes = std::max(1, args[++i].toInt());
        } else if (args[i] == u"--sim") {
            simProgram = args[++i];
        }
    }
    if (!QFileInfo::exists(simProgram)) {
        std::fprintf(stderr, "scan_pass: no simulator at %s\n", qPrintable(simProgram));
        return 1;
    }
    std::printf("scan_pass: %d passes over %d scales, kernel backend, pseudo-terminal, 9600 baud\n",
                passes, scales);
    const bool answering = report("all ten answering", run(simProgram, {}, passes), scales);
    const bool silent =
        report("three silent", run(simProgram, {131, 134, 137}, passes), scales - 3);
    return answering && silent ? 0 : 1;
}
