#include "SignalPipe.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace stellwyn::collector {

namespace {

int pipeEnds[2] = {-1, -1};
constexpr std::array handled = {SIGTERM, SIGINT, SIGHUP};

void onSignal(int number) {
    const int saved = errno;
    const auto byte = static_cast<unsigned char>(number);
    // A full pipe already holds a wake-up; this one may be dropped.
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
    errno = saved;
}

} // namespace

SignalPipe::SignalPipe(QObject* parent) : QObject(parent) {
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &SignalPipe::drain);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : handled) {
        ::sigaction(number, &action, nullptr);
    }
}

SignalPipe::~SignalPipe() {
    for (const int number : handled) {
        std::signal(number, SIG_DFL);
    }
    notifier_.reset();
    for (int& end : pipeEnds) {
        if (end >= 0) {
            ::close(end);
            end = -1;
        }
    }
}

void SignalPipe::drain() {
    unsigned char byte = 0;
    while (::read(pipeEnds[0], &byte, 1) == 1) {
        if (byte == SIGHUP) {
            emit hangUp();
        } else {
            emit terminate();
        }
    }
}

} // namespace stellwyn::collector
