#include "ServiceNotifier.h"

#include <QtGlobal>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace stellwyn::collector {

ServiceNotifier::ServiceNotifier(QObject* parent) : QObject(parent) {
    address_ = qgetenv("NOTIFY_SOCKET");
    // A path, or an abstract name written with a leading "@".
    if (address_.isEmpty() || (address_[0] != '/' && address_[0] != '@') ||
        static_cast<std::size_t>(address_.size()) >= sizeof(sockaddr_un::sun_path)) {
        address_.clear();
        return;
    }
    socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket_ < 0) {
        return;
    }
    bool ok = false;
    const qlonglong usec = qEnvironmentVariableIntValue("WATCHDOG_USEC", &ok);
    const QByteArray pid = qgetenv("WATCHDOG_PID");
    // The watchdog is for this process unless it names another one.
    if (ok && usec > 0 && (pid.isEmpty() || pid.toLongLong() == ::getpid())) {
        watchdog_.setInterval(static_cast<int>(qMax<qlonglong>(usec / 2000, 1)));
        connect(&watchdog_, &QTimer::timeout, this, [this] { send("WATCHDOG=1"); });
        watchdog_.start();
    }
}

ServiceNotifier::~ServiceNotifier() {
    if (socket_ >= 0) {
        ::close(socket_);
    }
}

void ServiceNotifier::ready() {
    send("READY=1");
}

void ServiceNotifier::reloading() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const qlonglong usec = qlonglong(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
    send("RELOADING=1\nMONOTONIC_USEC=" + QByteArray::number(usec));
}

void ServiceNotifier::stopping() {
    send("STOPPING=1");
}

void ServiceNotifier::status(const QString& text) {
    QByteArray line = text.toUtf8();
    line.replace('\n', ' ');
    send("STATUS=" + line);
}

void ServiceNotifier::send(const QByteArray& state) {
    if (socket_ < 0) {
        return;
    }
    sockaddr_un to{};
    to.sun_family = AF_UNIX;
    std::memcpy(to.sun_path, address_.constData(), static_cast<std::size_t>(address_.size()));
    if (to.sun_path[0] == '@') {
        to.sun_path[0] = '\0';
    }
    const auto length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::size_t(address_.size()));
    // A manager that is gone or does not read loses a notice; the collector never waits for
    // it, since a blocked event loop would stop the collecting itself.
    [[maybe_unused]] const ssize_t sent =
        ::sendto(socket_, state.constData(), std::size_t(state.size()), MSG_NOSIGNAL | MSG_DONTWAIT,
                 reinterpret_cast<const sockaddr*>(&to), length);
}

} // namespace stellwyn::collector
