// The real timers of the screen: what the mode timers' chain and guard take for granted of them.
#include "ChildProcess.h"
#include "acquisition/QtTimerDriver.h"
#include "core/Controls.h"
#include "core/FatalError.h"

#include <QTest>

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
    const testsupport::ChildRun run = testsupport::runInChild([](int fd) {
        core::setFatalErrorHandler(
            [fd](const QString& text) { testsupport::writeAll(fd, text.toUtf8()); });
        acquisition::QtTimerDriver driver;
        core::Timer timer;
        timer.Tick = [] { throw core::FatalError(QStringLiteral("Subscript out of range")); };
        driver.drive(timer);
        timer.setInterval(1);
        timer.setEnabled(true);
        QTest::qWait(5000);
        return 0;
    });
    QVERIFY(run.exited);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.told, QByteArray("Subscript out of range"));
}

QTEST_GUILESS_MAIN(QtTimerDriverTest)
#include "test_qt_timer_driver.moc"
