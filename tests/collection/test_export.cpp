// Exported readings read back by a reader that shares nothing with the writer: every field of
// every row, in the grid's order, whatever the descriptions hold. The XLSX is opened in a real
// office by the Calc test.
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
                 {QStringLiteral(STELLWYN_TEST_DATA "/read_csv.py"), path});
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
    void csv_readsBackEqualInTheGridsOrder();
    void badName_saysSoAndLeavesTheFileAlone();
};

// The grid's orders are the grid's test; one that is neither the ID's nor the store's shows the
// file follows the grid.
void ExportTest::csv_readsBackEqualInTheGridsOrder() {
    Pane p;
    p.f.opt_desc.setValue(true);
    p.chosen = p.file("readings.csv");
    p.f.btn_export.Click();

    core::Connection c = p.db();
    QList<QStringList> expected{{"ID", "ScaleID", "Reading", "Date", "Time", "Group", "TagID"}};
    for (const core::DataColRow& row : core::readings(c, DataColOrder::byScaleId)) {
        expected << texts(row);
    }
    QList<QStringList> got;
    for (const QJsonValue& row : readBack(p.chosen)) {
        got << row.toVariant().toStringList();
    }
    QCOMPARE(got, expected);
    QCOMPARE(p.dialogs.texts(), QStringList{});
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
