// The real timers of the screen: what the mode timers' chain and guard take for granted of them.
#include "acquisition/QtTimerDriver.h"
#include "core/Controls.h"
#include "core/FatalError.h"

#include <QTest>
#include <sys/wait.h>
#include <unistd.h>

using namespace stellwyn;

class QtTimerDriverTest : public QObject {
    Q_OBJECT
private slots:
    void aTickIsNotReenteredWhileItsHandlerYields();
    void intervalZeroStopsAnEnabledTimer();
    void anUntrappedErrorInATickEndsTheProgramWithItsText();
};

void QtTimerDriverTest::aTickIsNotReenteredWhileItsHandlerYields() {
    acquisition::QtTimerDriver driver;
    core::Timer slow;
    core::Timer other;
    int depth = 0;
    int deepest = 0;
    int slowTicks = 0;
    int otherTicksInYield = 0;
    int otherTicks = 0;
    slow.Tick = [&] {
        ++slowTicks;
        deepest = std::max(deepest, ++depth);
        if (slowTicks == 1) {
            // Several of its own intervals pass in this yield; only the other timer may tick.
            const int before = otherTicks;
            QTest::qWait(60);
            otherTicksInYield = otherTicks - before;
        }
        --depth;
    };
    other.Tick = [&] { ++otherTicks; };
    driver.drive(slow);
    driver.drive(other);
    slow.setInterval(5);
    other.setInterval(5);
    slow.setEnabled(true);
    other.setEnabled(true);

    QTRY_VERIFY(slowTicks >= 3);
    QCOMPARE(deepest, 1);
    QVERIFY(otherTicksInYield > 0);
}

void QtTimerDriverTest::intervalZeroStopsAnEnabledTimer() {
    acquisition::QtTimerDriver driver;
    core::Timer timer;
    int ticks = 0;
    timer.Tick = [&] { ++ticks; };
    driver.drive(timer);

    timer.setEnabled(true);
    QTest::qWait(50);
    QCOMPARE(ticks, 0);

    timer.setInterval(5);
    QTRY_VERIFY(ticks > 0);

    timer.setInterval(0);
    QTest::qWait(5);
    ticks = 0;
    QTest::qWait(50);
    QCOMPARE(ticks, 0);
    QVERIFY(timer.enabled());
}

// The error leaves the tick where the timer entered it, never through Qt's event code; it is
// shown once and the process ends with status 1. Run in a child, as it ends the process.
void QtTimerDriverTest::anUntrappedErrorInATickEndsTheProgramWithItsText() {
    int pipeEnds[2];
    QCOMPARE(::pipe(pipeEnds), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        core::setFatalErrorHandler([&](const QString& text) {
            const QByteArray bytes = text.toUtf8();
            [[maybe_unused]] const auto n = ::write(pipeEnds[1], bytes.constData(), bytes.size());
        });
        acquisition::QtTimerDriver driver;
        core::Timer timer;
        timer.Tick = [] { throw core::FatalError(QStringLiteral("Subscript out of range")); };
        driver.drive(timer);
        timer.setInterval(1);
        timer.setEnabled(true);
        QTest::qWait(5000);
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    QByteArray shown;
    char buffer[256];
    for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
        shown.append(buffer, n);
    }
    ::close(pipeEnds[0]);
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 1);
    QCOMPARE(shown, QByteArray("Subscript out of range"));
}

QTEST_GUILESS_MAIN(QtTimerDriverTest)
#include "test_qt_timer_driver.moc"
