// Exported readings read back by readers that share nothing with the writer: every field of
// every row, in the grid's order, whatever the descriptions hold.
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "collection/CollectionGrid.h"
#include "collection/ReadingExport.h"
#include "core/Form1Controls.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

using namespace stellwyn;
using core::DataColOrder;

Q_DECLARE_METATYPE(DataColOrder)

namespace {

// Descriptions an operator can type, and a scale with no reading yet.
void storeAwkwardRows(core::Connection& c) {
    const QDateTime at(QDate(2026, 5, 4), QTime(9, 30, 15));
    core::insertReading(c, QStringLiteral("Silo 2, \"east\""), QStringLiteral("  12.5 kg"), at);
    core::insertReading(c, QStringLiteral("two\r\nlines"), QStringLiteral("-0.5"),
                        at.addSecs(-3600));
    core::insertReading(c, QStringLiteral("Wägebrücke ü"), std::nullopt, at.addDays(1));
    core::insertReading(c, QStringLiteral("plain"), QStringLiteral("7"), at.addSecs(5));
}

QJsonArray readBack(const QString& path) {
    QProcess reader;
    reader.start(QStringLiteral("python3"),
                 {QStringLiteral(STELLWYN_TEST_DATA "/read_export.py"), path});
    if (!reader.waitForFinished(30000) || reader.exitCode() != 0) {
        qWarning() << reader.readAllStandardError();
        return {};
    }
    return QJsonDocument::fromJson(reader.readAllStandardOutput()).array();
}

// The collection pane's grid over a database of awkward rows, exporting to the file the
// operator names.
struct Pane {
    Pane() : grid(f, dialogs) {
        core::createDatabase(home.path());
        f.data2.ConnectionString = core::connectionText(home.path());
        f.data2.RecordSource = collection::CollectionGrid::baseQuery;
        core::Connection c = db();
        storeAwkwardRows(c);
        grid.chooseExportFile = [this] { return chosen; };
        grid.attach();
    }
    core::Connection db() { return core::Connection::open(f.data2.ConnectionString); }
    QString file(const char* name) const { return QDir(home.path()).filePath(QLatin1String(name)); }

    testsupport::TempHome home;
    core::Form1Controls f;
    testsupport::RecordingDialogs dialogs;
    collection::CollectionGrid grid;
    QString chosen;
};

QStringList texts(const core::DataColRow& row) {
    return {
        QString::number(row.id), row.scaleId,         row.reading.toString(), row.date, row.time,
        row.group.toString(),    row.tagId.toString()};
}

} // namespace

class ExportTest : public QObject {
    Q_OBJECT
private slots:
    void csv_readsBackEqualInTheGridsOrder_data();
    void csv_readsBackEqualInTheGridsOrder();
    void xlsx_holdsTheRowsWithTypedDateAndTime();
    void badName_saysSoAndLeavesTheFileAlone();
};

void ExportTest::csv_readsBackEqualInTheGridsOrder_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<DataColOrder>("order");
    QTest::newRow("by ID") << "opt_ID" << DataColOrder::byId;
    QTest::newRow("by date and time") << "opt_datetime" << DataColOrder::byDateTime;
    QTest::newRow("by scale") << "opt_desc" << DataColOrder::byScaleId;
}

void ExportTest::csv_readsBackEqualInTheGridsOrder() {
    QFETCH(QString, option);
    QFETCH(DataColOrder, order);
    Pane p;
    core::OptionButton* sortBy = option == u"opt_ID"         ? &p.f.opt_ID
                                 : option == u"opt_datetime" ? &p.f.opt_datetime
                                                             : &p.f.opt_desc;
    sortBy->setValue(true);
    p.chosen = p.file("readings.csv");
    p.f.btn_export.Click();

    core::Connection c = p.db();
    QList<QStringList> expected{{"ID", "ScaleID", "Reading", "Date", "Time", "Group", "TagID"}};
    for (const core::DataColRow& row : core::readings(c, order)) {
        expected << texts(row);
    }
    QList<QStringList> got;
    for (const QJsonValue& row : readBack(p.chosen)) {
        got << row.toVariant().toStringList();
    }
    QCOMPARE(got, expected);
    QCOMPARE(p.dialogs.texts(), QStringList{});
}

void ExportTest::xlsx_holdsTheRowsWithTypedDateAndTime() {
    if (!collection::xlsxExportAvailable()) {
        QSKIP("built without libxlsxwriter");
    }
    testsupport::TempHome home;
    core::createDatabase(home.path());
    core::Connection c = core::Connection::open(core::connectionText(home.path()));
    storeAwkwardRows(c);
    const QString path = QDir(home.path()).filePath(QStringLiteral("readings.xlsx"));

    QCOMPARE(collection::exportReadings(c, DataColOrder::byId, path), 4);

    const QJsonArray sheet = readBack(path);
    const QList<core::DataColRow> rows = core::readings(c, DataColOrder::byId);
    QCOMPARE(sheet.size(), rows.size() + 1);
    for (int i = 0; i < rows.size(); ++i) {
        const core::DataColRow& row = rows.at(i);
        const QJsonArray cells = sheet.at(i + 1).toArray();
        const auto cell = [&](int column) { return cells.at(column).toArray(); };
        QCOMPARE(cell(0).at(1).toDouble(), double(row.id));
        QCOMPARE(cell(1).at(1).toString(), row.scaleId);
        // The weight stays the scale's text.
        QCOMPARE(cell(2).at(0).toString(), QStringLiteral("s"));
        QCOMPARE(cell(2).at(1).toString(), row.reading.toString());
        const QDate date = QDate::fromString(row.date, Qt::ISODate);
        const QTime time = QTime::fromString(row.time, QStringLiteral("HH:mm:ss"));
        QCOMPARE(cell(3).at(0).toString(), QStringLiteral("n"));
        QCOMPARE(cell(3).at(1).toDouble(), double(QDate(1899, 12, 30).daysTo(date)));
        QCOMPARE(cell(4).at(0).toString(), QStringLiteral("n"));
        QVERIFY(qAbs(cell(4).at(1).toDouble() * 86400 - time.msecsSinceStartOfDay() / 1000.0) <
                0.01);
    }
}

void ExportTest::badName_saysSoAndLeavesTheFileAlone() {
    Pane p;
    p.chosen = p.file("readings.txt");
    QFile old(p.chosen);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("kept");
    old.close();
    p.f.btn_export.Click();

    QCOMPARE(p.dialogs.texts().size(), 1);
    QVERIFY(p.dialogs.texts().first().startsWith(u"message: The readings could not be written"));
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("kept"));
}

QTEST_GUILESS_MAIN(ExportTest)
#include "test_export.moc"
