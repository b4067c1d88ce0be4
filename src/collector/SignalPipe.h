#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace stellwyn::collector {

// SIGTERM, SIGINT and SIGHUP as Qt signals on the event loop. The handlers only write the
// signal's number into a pipe (all a handler may safely do); the loop reads it back.
// One instance per process.
class SignalPipe : public QObject {
    Q_OBJECT
public:
    explicit SignalPipe(QObject* parent = nullptr);
    ~SignalPipe() override;
    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    bool ok() const { return notifier_ != nullptr; }

signals:
    // SIGTERM or SIGINT.
    void terminate();
    // SIGHUP.
    void hangUp();

private:
    void drain();

    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace stellwyn::collector
