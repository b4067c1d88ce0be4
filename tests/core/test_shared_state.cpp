// The shared state's tables and the small routines every other part leans on: the two line
// splitters, the clearing of the scale table, and the non-yielding delay with its midnight guard.
#include "core/Clock.h"
#include "core/Delays.h"
#include "core/FatalError.h"
#include "core/Module1.h"

#include <QTest>

using namespace stellwyn::core;

class SharedState : public QObject {
    Q_OBJECT
private slots:
    void splitters_data();
    void splitters();
    void splitters_clearOnlyTheFirstFiftyEntries();
    void splitters_pastEntry100IsFatal();
    void clearscales_leavesEntryTen();
    void tables_outOfBoundsIsFatal_data();
    void tables_outOfBoundsIsFatal();
    void shortdelay_data();
    void shortdelay();
};

void SharedState::splitters_data() {
    QTest::addColumn<bool>("tabs");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("tokens");
    QTest::addColumn<QString>("trimmedLine");

    QTest::newRow("spaces: two blanks are one separator")
        << false << "ab  cd" << QStringList{"ab", "cd"} << "ab  cd";
    QTest::newRow("spaces: empty line") << false << "" << QStringList{} << "";
    QTest::newRow("spaces: blanks only") << false << "    " << QStringList{} << "";
    QTest::newRow("spaces: one word") << false << "  word  " << QStringList{"word"} << "word";
    QTest::newRow("spaces: tab is not a separator")
        << false << "a\tb c" << QStringList{"a\tb", "c"} << "a\tb c";
    QTest::newRow("tabs: two tabs give an empty middle field")
        << true << "ab\t\tcd" << QStringList{"ab", "", "cd"} << "ab\t\tcd";
    QTest::newRow("tabs: blanks after a tab vanish")
        << true << "ab\t   cd" << QStringList{"ab", "cd"} << "ab\t   cd";
    QTest::newRow("tabs: blanks inside a field are kept")
        << true << " 12 345\tx y " << QStringList{"12 345", "x y"} << "12 345\tx y";
    QTest::newRow("tabs: a closing tab stays on the last field")
        << true << "a\tb\t" << QStringList{"a", "b\t"} << "a\tb\t";
    QTest::newRow("tabs: a CR at the end is part of the last word")
        << true << "1\t2\r" << QStringList{"1", "2\r"} << "1\t2\r";
}

void SharedState::splitters() {
    QFETCH(bool, tabs);
    QFETCH(QString, line);
    QFETCH(QStringList, tokens);
    QFETCH(QString, trimmedLine);

    Module1 m;
    m.tokens[tokens.size()] = QStringLiteral("stale");
    if (tabs) {
        m.parse_tabs(line);
    } else {
        m.parse_spaces(line);
    }
    QCOMPARE(m.tokencount, tokens.size());
    for (int i = 0; i < tokens.size(); ++i) {
        QCOMPARE(m.tokens[i], tokens[i]);
    }
    QCOMPARE(m.tokens[tokens.size()], QString());
    QCOMPARE(line, trimmedLine);
}

void SharedState::splitters_clearOnlyTheFirstFiftyEntries() {
    Module1 m;
    for (int i = 0; i <= 100; ++i) {
        m.tokens[i] = QStringLiteral("old%1").arg(i);
    }
    QStringList words;
    for (int i = 0; i < 60; ++i) {
        words << QStringLiteral("w%1").arg(i);
    }
    QString line = words.join(u' ');
    m.parse_spaces(line);
    QCOMPARE(m.tokencount, 60);
    QCOMPARE(m.tokens[59], QStringLiteral("w59"));
    QCOMPARE(m.tokens[60], QStringLiteral("old60"));
    QCOMPARE(m.tokens[100], QStringLiteral("old100"));

    QString shortLine = QStringLiteral("x\ty");
    m.parse_tabs(shortLine);
    QCOMPARE(m.tokencount, 2);
    QCOMPARE(m.tokens[2], QString());
    QCOMPARE(m.tokens[49], QString());
    QCOMPARE(m.tokens[50], QStringLiteral("w50"));
}

void SharedState::splitters_pastEntry100IsFatal() {
    Module1 m;
    QStringList words;
    for (int i = 0; i < 102; ++i) {
        words << QStringLiteral("w");
    }
    QString line = words.join(u' ');
    QVERIFY_THROWS_EXCEPTION(FatalError, m.parse_spaces(line));
    QCOMPARE(m.tokens[100], QStringLiteral("w"));
}

void SharedState::clearscales_leavesEntryTen() {
    Module1 m;
    for (int i = 0; i <= 10; ++i) {
        m.netid[i] = 130 + i;
        m.usbdevindex[i] = i;
        m.scalemark[i] = 12345;
        m.scalelogging[i] = -1;
        m.scaleactive[i] = -1;
        m.scalepolltime[i] = 0.5;
        m.scaleid[i] = 7;
        m.scaledesc[i] = QStringLiteral("SCALE");
        m.scaleserial[i] = QStringLiteral("Unknown");
        m.scaleweight[i] = QStringLiteral("  12.5");
        m.scalelast[i] = QStringLiteral("partial");
    }
    m.curscale = 3;
    m.curnetid = 133;
    m.scalecount = 11;

    m.clearscales();

    for (int i = 0; i <= 9; ++i) {
        QCOMPARE(m.netid[i], 0);
        QCOMPARE(m.usbdevindex[i], 0);
        QCOMPARE(m.scalemark[i], 0);
        QCOMPARE(m.scalelogging[i], 0);
        QCOMPARE(m.scaleactive[i], 0);
        QCOMPARE(m.scalepolltime[i], 0.0);
        QCOMPARE(m.scaleid[i], 0);
        QVERIFY(m.scaledesc[i].isEmpty());
        QVERIFY(m.scaleserial[i].isEmpty());
        QVERIFY(m.scaleweight[i].isEmpty());
        QVERIFY(m.scalelast[i].isEmpty());
    }
    QCOMPARE(m.netid[10], 140);
    QCOMPARE(m.scaledesc[10], QStringLiteral("SCALE"));
    QCOMPARE(m.scaleweight[10], QStringLiteral("  12.5"));
    QCOMPARE(m.curscale, 0);
    QCOMPARE(m.curnetid, 0);
    QCOMPARE(m.scalecount, 0);
}

void SharedState::tables_outOfBoundsIsFatal_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("fatal");
    QTest::newRow("-1") << -1 << true;
    QTest::newRow("0") << 0 << false;
    QTest::newRow("10") << 10 << false;
    QTest::newRow("11") << 11 << true;
}

void SharedState::tables_outOfBoundsIsFatal() {
    QFETCH(int, index);
    QFETCH(bool, fatal);
    Module1 m;
    if (fatal) {
        QVERIFY_THROWS_EXCEPTION(FatalError, m.netid[index] = 1);
        QVERIFY_THROWS_EXCEPTION(FatalError, (void)m.scaleweight[index]);
    } else {
        m.netid[index] = 131;
        QCOMPARE(m.netid[index], 131);
    }
}

void SharedState::shortdelay_data() {
    QTest::addColumn<QTime>("start");
    QTest::addColumn<QTime>("end");
    QTest::addColumn<bool>("nextDay");

    QTest::newRow("midday") << QTime(12, 0) << QTime(12, 0, 0, 400) << false;
    QTest::newRow("last safe moment") << QTime(23, 59, 57, 600) << QTime(23, 59, 58) << false;
    QTest::newRow("just past the guard waits for midnight")
        << QTime(23, 59, 57, 601) << QTime(0, 0, 0, 401) << true;
    QTest::newRow("at 23:59:59") << QTime(23, 59, 59) << QTime(0, 0, 0, 401) << true;
}

void SharedState::shortdelay() {
    QFETCH(QTime, start);
    QFETCH(QTime, end);
    QFETCH(bool, nextDay);

    const QDate day(2026, 3, 14);
    VirtualClock clock(QDateTime(day, start));
    stellwyn::core::shortdelay(clock);
    QCOMPARE(clock.now().date(), nextDay ? day.addDays(1) : day);
    // The midnight hold lands a millisecond past midnight before the 0.4 s are counted.
    QVERIFY2(qAbs(clock.now().time().msecsTo(end)) <= 1,
             qPrintable(clock.now().time().toString(QStringLiteral("HH:mm:ss.zzz"))));
}

QTEST_GUILESS_MAIN(SharedState)
#include "test_shared_state.moc"
