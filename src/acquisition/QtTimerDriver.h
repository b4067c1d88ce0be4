#pragma once

#include <QObject>
#include <QTimer>
#include <vector>

namespace stellwyn::core {
class Timer;
}

namespace stellwyn::acquisition {

// Turns the screen's timer state into real ticks on the event loop. A timer ticks only while
// enabled with an interval above 0 (an interval of 0 stops it although it stays enabled), and
// setting its interval starts the count afresh. Qt does not deliver a timer's tick again while
// its handler is still running (yielding), which is what the Timer1 chain relies on.
class QtTimerDriver : public QObject {
    Q_OBJECT
public:
    explicit QtTimerDriver(QObject* parent = nullptr);
    ~QtTimerDriver() override;

    void drive(core::Timer& timer);

private:
    struct Driven {
        core::Timer* state;
        QTimer* timer;
        int lastInterval;
    };
    void follow(Driven& driven);

    std::vector<Driven*> driven_;
};

} // namespace stellwyn::acquisition
