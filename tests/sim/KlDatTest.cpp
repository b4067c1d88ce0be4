// The KL.Dat writer: records in the form an SD import reads, misfits it must skip.
#include "sim/KlDatWriter.h"

#include <QRegularExpression>
#include <QTest>

using namespace stellwyn;

class KlDatTest : public QObject {
    Q_OBJECT
private slots:
    void lines_holdTheRecordsAndTheMisfits_data();
    void lines_holdTheRecordsAndTheMisfits();
    void content_endsEveryLineInCrLfAndRepeatsForASeed();
};

void KlDatTest::lines_holdTheRecordsAndTheMisfits_data() {
    QTest::addColumn<int>("records");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("three") << 3;
    QTest::newRow("many") << 2000;
}

void KlDatTest::lines_holdTheRecordsAndTheMisfits() {
    QFETCH(int, records);
    sim::KlDatOptions options;
    options.records = records;
    options.ids = {130, 200};
    const QList<QByteArray> lines = sim::klDatLines(options);

    // address, optional "!words", optional "#g", reading, "%" date "@" time
    static const QRegularExpression form(QStringLiteral(
        "^([\\x82\\xc8])(?:!((?:[^ #]+ )*([^ #]+)))?(?:#(.))?([ 0-9.]+)%(\\d\\d/\\d\\d/\\d{4})@"
        "(\\d\\d):(\\d\\d:\\d\\d)$"));
    int read = 0;
    int tagged = 0;
    int grouped = 0;
    int shortOnes = 0;
    int longOnes = 0;
    bool edge15 = false;
    bool edge70 = false;
    for (const QByteArray& line : lines) {
        if (!sim::isKlRecordLength(line.size())) {
            line.size() < 16 ? ++shortOnes : ++longOnes;
            edge15 = edge15 || line.size() == 15;
            edge70 = edge70 || line.size() == 70;
            continue;
        }
        const auto m = form.match(QString::fromLatin1(line));
        QVERIFY2(m.hasMatch(), line.constData());
        // A tag always closes with its "#", or an import would stop at that line.
        if (!m.captured(2).isEmpty()) {
            ++tagged;
            QVERIFY(!m.captured(4).isEmpty());
        }
        grouped += m.captured(4).isEmpty() ? 0 : 1;
        QVERIFY(m.captured(7).toInt() < 24);
        ++read;
    }
    QCOMPARE(read, records);
    QVERIFY(shortOnes >= 2);
    QVERIFY(longOnes >= 2);
    QVERIFY(edge15);
    QVERIFY(edge70);
    if (records >= 6) {
        QVERIFY(tagged > 0 && tagged < records);
        QVERIFY(grouped > tagged && grouped < records);
        // Misfits stand among the records, not only at the end.
        QVERIFY(!sim::isKlRecordLength(lines.at(1).size()));
        QVERIFY(sim::isKlRecordLength(lines.last().size()));
    }
}

void KlDatTest::content_endsEveryLineInCrLfAndRepeatsForASeed() {
    sim::KlDatOptions options;
    options.records = 40;
    const QByteArray content = sim::klDatContent(options);
    QCOMPARE(content.count("\r\n"), sim::klDatLines(options).size());
    QCOMPARE(content.count('\n'), content.count("\r\n"));
    QCOMPARE(sim::klDatContent(options), content);
    options.seed = 2;
    QVERIFY(sim::klDatContent(options) != content);
}

QTEST_GUILESS_MAIN(KlDatTest)
#include "KlDatTest.moc"
