// Replies over time on the virtual clock: wire time, faults, moving weights, schedules, the RF
// module in front of a bus.
#include "core/Clock.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"
#include "sim/RealTimePump.h"
#include "sim/RfModule.h"
#include "sim/Scenario.h"
#include "sim/WireTime.h"

#include <QTest>

using namespace stellwyn;
using sim::Bus;

namespace {

const QByteArray kPoll130 = QByteArray("\x82\x11"
                                       "1",
                                       3);
const QByteArray kCell130 = QByteArray("\x82  ") + "  12.5\r\n";

// A line built from scenario directives, started at the clock's present time.
struct Line {
    core::VirtualClock clock;
    sim::Scenario scenario;
    std::unique_ptr<Bus> bus;
    std::unique_ptr<sim::InProcessLink> link;

    explicit Line(const QStringList& directives) {
        QString error;
        for (const QString& d : directives) {
            if (!scenario.parseLine(d, &error)) {
                qFatal("%s", qPrintable(error));
            }
        }
        bus = std::make_unique<Bus>(scenario.mode);
        scenario.populate(*bus, sim::lineSeconds(clock));
        link = std::make_unique<sim::InProcessLink>(*bus, clock);
        if (scenario.pace) {
            link->setByteTime(sim::kByteTime9600);
        }
    }
    void advanceMs(int ms) { clock.advance(ms / 1000.0); }
};

} // namespace

class TimingAndFaultsTest : public QObject {
    Q_OBJECT
private slots:
    void pacedReply_arrivesByteByByteAfterTheRequestsWireTime_data();
    void pacedReply_arrivesByteByByteAfterTheRequestsWireTime();
    void unpacedReply_isThereAtOnceAndTurnaroundDelaysIt();
    void fault_shapesTheReplyAsArmed_data();
    void fault_shapesTheReplyAsArmed();
    void purge_dropsWhatArrivedButNotALateReply();
    void movingWeight_showsMotionThenSettles_data();
    void movingWeight_showsMotionThenSettles();
    void scheduledPrints_repeatOnTheirPeriod();
    void pushedPrints_goOutUnaskedAsOneBurst();
    void rfModule_answersEscapeAndTakesItsChannel();
    void scenario_refusesMalformedDirectives_data();
    void scenario_refusesMalformedDirectives();
};

void TimingAndFaultsTest::pacedReply_arrivesByteByByteAfterTheRequestsWireTime_data() {
    QTest::addColumn<bool>("pump");
    QTest::addColumn<int>("ms");
    QTest::addColumn<int>("available");
    // Request lands at 3.125 ms; reply byte k has left the line at 3.125 + k * 1.0417 ms. The
    // same holds in process and for another process behind the pseudo-terminal's pump.
    for (const bool pump : {false, true}) {
        const char* via = pump ? "pump: " : "in process: ";
        QTest::addRow("%srequest still on the wire", via) << pump << 3 << 0;
        QTest::addRow("%sfirst byte", via) << pump << 5 << 1;
        QTest::addRow("%sfive bytes", via) << pump << 9 << 5;
        QTest::addRow("%sten bytes", via) << pump << 14 << 10;
        QTest::addRow("%swhole cell", via) << pump << 15 << 11;
        QTest::addRow("%snothing more", via) << pump << 200 << 11;
    }
}

void TimingAndFaultsTest::pacedReply_arrivesByteByByteAfterTheRequestsWireTime() {
    QFETCH(bool, pump);
    QFETCH(int, ms);
    QFETCH(int, available);
    Line line({"ids 130", "weight 130 12.5", "pace on"});
    if (pump) {
        sim::RealTimePump realTime(*line.bus, line.clock);
        realTime.setByteTime(sim::kByteTime9600);
        QByteArray sent;
        connect(&realTime, &sim::RealTimePump::output, this,
                [&sent](const QByteArray& bytes) { sent += bytes; });
        realTime.feed(kPoll130);
        line.advanceMs(ms);
        realTime.run();
        QCOMPARE(sent, kCell130.left(available));
        return;
    }
    line.link->write(kPoll130);
    QCOMPARE(line.link->bytesToWrite(), 3);
    const auto next = line.link->secondsToNextEvent();
    QVERIFY(next.has_value());
    QVERIFY(qAbs(*next - sim::kByteTime9600) < 1e-6);
    line.advanceMs(ms);
    QCOMPARE(line.link->bytesAvailable(), available);
    QCOMPARE(line.link->readAll(), kCell130.left(available));
}

void TimingAndFaultsTest::unpacedReply_isThereAtOnceAndTurnaroundDelaysIt() {
    Line fast({"weight 130 12.5"});
    fast.link->write(kPoll130);
    QCOMPARE(fast.link->readAll(), kCell130);

    Line slow({"weight 130 12.5", "turnaround 0.02"});
    slow.link->write(kPoll130);
    slow.advanceMs(19);
    QCOMPARE(slow.link->bytesAvailable(), 0);
    slow.advanceMs(1);
    QCOMPARE(slow.link->readAll(), kCell130);
}

void TimingAndFaultsTest::fault_shapesTheReplyAsArmed_data() {
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("atOnce");
    QTest::addColumn<QByteArray>("afterOneSecond");

    QTest::newRow("silence") << "fault 130 silence count 1" << QByteArray() << QByteArray();
    QTest::newRow("late") << "fault 130 late 0.5 count 1" << QByteArray() << kCell130;
    QTest::newRow("split") << "fault 130 split 4 0.3 count 1" << kCell130.left(4) << kCell130;
    QTest::newRow("garbage") << "fault 130 garbage 05ff0d count 1"
                             << QByteArray("\x05\xff\r", 3) + kCell130
                             << QByteArray("\x05\xff\r", 3) + kCell130;
    QTest::newRow("low address") << "fault 130 low-address 127 count 1"
                                 << "\x7f" + kCell130.mid(1) << "\x7f" + kCell130.mid(1);
    QTest::newRow("bang without hash")
        << "fault 130 bang-no-hash count 1" << QByteArray("\x82!ROW 3   12.5\r\n")
        << QByteArray("\x82!ROW 3   12.5\r\n");
    QTest::newRow("missing CR") << "fault 130 missing-cr count 1" << kCell130.chopped(2) + '\n'
                                << kCell130.chopped(2) + '\n';
    QTest::newRow("other indicator's fault") << "fault 131 silence" << kCell130 << kCell130;
}

void TimingAndFaultsTest::fault_shapesTheReplyAsArmed() {
    QFETCH(QString, fault);
    QFETCH(QByteArray, atOnce);
    QFETCH(QByteArray, afterOneSecond);
    Line line({"ids 130,131", "weight * 12.5", "tag 130 ROW 3", fault});
    line.link->write(kPoll130);
    QCOMPARE(line.link->read(100), atOnce);
    line.advanceMs(1000);
    QCOMPARE(atOnce + line.link->readAll(), afterOneSecond);
    // Armed for one reply only: the next is clean.
    line.link->write(kPoll130);
    line.advanceMs(1000);
    QCOMPARE(line.link->readAll(), kCell130);
}

void TimingAndFaultsTest::purge_dropsWhatArrivedButNotALateReply() {
    Line line({"weight 130 12.5", "fault 130 late 0.5 count 1"});
    line.link->write(kPoll130);
    line.link->write(QByteArray("\x82\x11"
                                "F",
                                3));
    line.advanceMs(1);
    // The second request was answered; the first still has its delay to run.
    QCOMPARE(line.link->bytesAvailable(), 11);
    line.link->clearReceived();
    QCOMPARE(line.link->bytesAvailable(), 0);
    line.advanceMs(600);
    QCOMPARE(line.link->readAll(), kCell130);
}

void TimingAndFaultsTest::movingWeight_showsMotionThenSettles_data() {
    QTest::addColumn<int>("ms");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("before the load") << 500 << QByteArray("\x82     0.0\r\n");
    QTest::newRow("moving") << 1500 << QByteArray("\x82 M  87.5\r\n");
    QTest::newRow("settled") << 3000 << QByteArray("\x82   100.0\r\n");
}

void TimingAndFaultsTest::movingWeight_showsMotionThenSettles() {
    QFETCH(int, ms);
    QFETCH(QByteArray, reply);
    Line line({"weight 130 100 settle 1 at 1"});
    line.advanceMs(ms);
    line.link->write(kPoll130);
    QCOMPARE(line.link->readAll(), reply);
}

void TimingAndFaultsTest::scheduledPrints_repeatOnTheirPeriod() {
    Line line({"mode rs232", "weight * 5", "group * 3", "print * at 1 every 2"});
    QCOMPARE(line.link->bytesAvailable(), 0);
    line.advanceMs(1000);
    QCOMPARE(line.link->readAll(), QByteArray("#3   5.0\r\n"));
    line.advanceMs(1999);
    QCOMPARE(line.link->bytesAvailable(), 0);
    line.advanceMs(4001);
    QCOMPARE(line.link->readAll(), QByteArray("#3   5.0\r\n#3   5.0\r\n#3   5.0\r\n"));
}

void TimingAndFaultsTest::pushedPrints_goOutUnaskedAsOneBurst() {
    Line line({"ids 130,131,132", "weight * 1", "print 132,130 at 0.5 push", "pace on"});
    line.advanceMs(499);
    QCOMPARE(line.link->bytesAvailable(), 0);
    line.advanceMs(100);
    const QByteArray cell = QByteArray("+    1.0\r\n");
    QCOMPARE(line.link->readAll(), "\x82" + cell + "\x84" + cell);
}

void TimingAndFaultsTest::rfModule_answersEscapeAndTakesItsChannel() {
    core::VirtualClock clock;
    Bus bus(Bus::Mode::Addressed);
    bus.add(130).weight().set(12.5, 0.0);
    sim::RfModule rf(bus, 3);
    sim::InProcessLink link(rf, clock);

    link.write(kPoll130);
    QCOMPARE(link.readAll(), QByteArray()); // off the bus's channel

    link.write("+++");
    QVERIFY(link.bytesAvailable() >= 3);
    QVERIFY(rf.inCommandMode());
    link.readAll();
    link.write("ATHP 03,CN\r");
    QCOMPARE(link.readAll(), QByteArray("OK\r"));
    QCOMPARE(rf.channel(), 3);
    QVERIFY(!rf.inCommandMode());
    link.write(kPoll130);
    QCOMPARE(link.readAll(), kCell130);

    // A channel the host could not map leaves the module where it was.
    link.write("+++");
    link.write("ATHP ,CN\r");
    QCOMPARE(link.readAll(), QByteArray("OK\rOK\r"));
    QCOMPARE(rf.channel(), 3);
    QCOMPARE(rf.commands(), (QList<QByteArray>{"ATHP 03,CN", "ATHP ,CN"}));
}

void TimingAndFaultsTest::scenario_refusesMalformedDirectives_data() {
    QTest::addColumn<QString>("directive");
    QTest::addColumn<bool>("good");
    QTest::newRow("comment") << "// a note" << true;
    QTest::newRow("blank") << "   " << true;
    QTest::newRow("weight") << "weight 130 12.5 settle 2 at 1" << true;
    QTest::newRow("weight without value") << "weight 130" << false;
    QTest::newRow("weight bad option") << "weight 130 1 slowly 2" << false;
    QTest::newRow("bad mode") << "mode rs485" << false;
    QTest::newRow("NetID out of range") << "ids 130,300" << false;
    QTest::newRow("print list") << "print 130,131 every 5 push" << true;
    QTest::newRow("print bad list") << "print 130,x at 1" << false;
    QTest::newRow("fault split") << "fault * split 3 0.2 count 2" << true;
    QTest::newRow("fault split without gap") << "fault * split 3" << false;
    QTest::newRow("unknown fault") << "fault 130 smoke" << false;
    QTest::newRow("unknown directive") << "explode 130" << false;
    QTest::newRow("style") << "style 130 hash" << true;
    QTest::newRow("bad style") << "style 130 bold" << false;
}

void TimingAndFaultsTest::scenario_refusesMalformedDirectives() {
    QFETCH(QString, directive);
    QFETCH(bool, good);
    sim::Scenario scenario;
    QString error;
    QCOMPARE(scenario.parseLine(directive, &error), good);
    QCOMPARE(error.isEmpty(), good);
}

QTEST_GUILESS_MAIN(TimingAndFaultsTest)
#include "TimingAndFaultsTest.moc"
