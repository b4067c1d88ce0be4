// Readings into a real LibreOffice Calc, started once for this program with a profile and a
// pipe of its own: where the rows land and in what kind of cell, which document and sheet take
// them, what attaching finds, and an exported XLSX opened in it.
#include "HeadlessOffice.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "collection/ExcelInterface.h"
#include "collection/ReadingCollection.h"
#include "collection/ReadingExport.h"
#include "collection/uno/CalcSpreadsheetApp.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QDir>
#include <QTest>

using namespace stellwyn;

namespace {

// The collection pane with "Excel Output" ticked and three scales with readings, writing to
// the office on `pipe`.
struct Pane {
    explicit Pane(const QString& pipe)
        : calc(pipe), collection(m, f, clock), excel(m, f, clock, dialogs, calc) {
        core::createDatabase(home.path());
        m.dataconn = core::connectionText(home.path());
        for (int i = 0; i < 3; ++i) {
            m.netid[i] = 130 + i;
            m.scaledesc[i] = QStringLiteral("SCALE %1").arg(130 + i);
            m.scaleweight[i] = QStringLiteral("W%1").arg(i + 1);
            f.Combo1.addItem(m.scaledesc[i]);
        }
        m.scalecount = 3;
        collection.excelOutput = [this](int slot) { excel.excel_write_reading(slot); };
        collection.attach();
        f.chk_Excel.setValue(1);
    }
    qint64 storedRows() {
        core::Connection c = core::Connection::open(m.dataconn);
        return core::countReadings(c);
    }

    testsupport::TempHome home;
    core::VirtualClock clock{QDateTime(QDate(2026, 5, 4), QTime(9, 30, 15))};
    core::Module1 m;
    core::Form1Controls f;
    testsupport::RecordingDialogs dialogs;
    collection::CalcSpreadsheetApp calc;
    collection::ReadingCollection collection;
    collection::ExcelInterface excel;
};

} // namespace

class CalcOutputTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void saveCurrentThenSaveAll_landOnTheirRowsUnderTheHeader();
    void twoDocuments_onlyTheFirstOnItsActiveSheetIsWritten();
    void attach_findsNoOfficeOrNoSpreadsheet();
    void xlsxExport_opensWithTheSameRows();

private:
    QString row(int document, int r) {
        QStringList cells;
        for (int column = 1; column <= 5; ++column) {
            cells << office_->text(document, r, column);
        }
        return cells.join(u'|');
    }
    std::unique_ptr<testsupport::HeadlessOffice> office_;
};

void CalcOutputTest::initTestCase() {
    office_ = std::make_unique<testsupport::HeadlessOffice>();
    QString error;
    QVERIFY2(office_->start(error), qPrintable(error));
}

void CalcOutputTest::init() {
    office_->closeAll();
}

void CalcOutputTest::saveCurrentThenSaveAll_landOnTheirRowsUnderTheHeader() {
    const int doc = office_->newSpreadsheet();
    Pane p(office_->pipe());
    p.f.Combo1.setListIndex(1);
    p.f.btn_LogData.Click();

    QCOMPARE(row(doc, 1), QStringLiteral("ScaleID|Reading|Time|Date|ID"));
    // Slot 0 whichever scale is selected; -1 for the first of a run.
    QCOMPARE(office_->text(doc, 2, 1), QStringLiteral("SCALE 130"));
    QCOMPARE(office_->text(doc, 2, 2), QStringLiteral("W1"));
    QCOMPARE(office_->text(doc, 2, 5), QStringLiteral("-1"));
    QCOMPARE(p.m.excelrow, std::int16_t(3));
    // A date and a time, each a value that Calc shows in its own format.
    QCOMPARE(office_->kind(doc, 2, 4), QStringLiteral("value"));
    QCOMPARE(office_->value(doc, 2, 4), double(QDate(1899, 12, 30).daysTo(QDate(2026, 5, 4))));
    QCOMPARE(office_->kind(doc, 2, 3), QStringLiteral("value"));
    QVERIFY(qAbs(office_->value(doc, 2, 3) * 86400 - (9 * 3600 + 30 * 60 + 15)) < 0.01);
    QCOMPARE(office_->text(doc, 2, 4), QStringLiteral("2026-05-04"));
    QCOMPARE(office_->text(doc, 2, 3), QStringLiteral("09:30:15"));

    // Rows 1 (Save Current) then 2 to 4: the rows of IDs 2, 3, 4 land on sheet rows 3, 4, 5.
    p.f.btn_dataLogAll.Click();
    QCOMPARE(office_->text(doc, 3, 1), QStringLiteral("SCALE 130"));
    QCOMPARE(office_->text(doc, 3, 5), QStringLiteral("2"));
    QCOMPARE(office_->text(doc, 5, 1), QStringLiteral("SCALE 132"));
    QCOMPARE(office_->text(doc, 5, 2), QStringLiteral("W3"));
    QCOMPARE(office_->text(doc, 5, 5), QStringLiteral("4"));
    QCOMPARE(p.m.excelrow, std::int16_t(6));
    QCOMPARE(p.dialogs.texts(), QStringList{});
}

void CalcOutputTest::twoDocuments_onlyTheFirstOnItsActiveSheetIsWritten() {
    const int first = office_->newSpreadsheet();
    office_->addSheet(first, true);
    const int second = office_->newSpreadsheet();
    Pane p(office_->pipe());
    p.f.Combo1.setListIndex(0);
    p.f.btn_LogData.Click();

    QCOMPARE(office_->text(first, 2, 1), QStringLiteral("SCALE 130"));
    QCOMPARE(office_->kind(first, 1, 1, 0), QStringLiteral("empty"));
    QCOMPARE(office_->kind(second, 1, 1), QStringLiteral("empty"));
}

// The rules around these two cases are the output's own; what the office has to give is nothing
// to attach to, or no spreadsheet.
void CalcOutputTest::attach_findsNoOfficeOrNoSpreadsheet() {
    collection::CalcSpreadsheetApp nobody(office_->pipe() + QStringLiteral("-nobody"));
    QVERIFY(nobody.attach() == nullptr);

    collection::CalcSpreadsheetApp calc(office_->pipe());
    std::unique_ptr<collection::SpreadsheetApplication> app = calc.attach();
    QVERIFY(app != nullptr);
    QCOMPARE(app->workbookCount(), 0);
    QVERIFY_THROWS_EXCEPTION(collection::SpreadsheetError, app->firstWorkbook());
}

void CalcOutputTest::xlsxExport_opensWithTheSameRows() {
    if (!collection::xlsxExportAvailable()) {
        QSKIP("built without libxlsxwriter");
    }
    testsupport::TempHome home;
    core::createDatabase(home.path());
    core::Connection c = core::Connection::open(core::connectionText(home.path()));
    const QDateTime at(QDate(2026, 5, 4), QTime(9, 30, 15));
    core::insertReading(c, QStringLiteral("Silo 2, \"east\""), QStringLiteral("  12.5"), at);
    core::insertReading(c, QStringLiteral("Wägebrücke"), std::nullopt, at.addDays(1));
    const QString path = QDir(home.path()).filePath(QStringLiteral("readings.xlsx"));
    collection::exportReadings(c, core::DataColOrder::byId, path);

    const int doc = office_->open(path);
    QVERIFY(doc >= 0);
    QStringList got;
    for (int r = 1; r <= 3; ++r) {
        QStringList cells;
        for (int column = 1; column <= 5; ++column) {
            cells << office_->text(doc, r, column, 0);
        }
        got << cells.join(u'|');
    }
    QCOMPARE(got, (QStringList{"ID|ScaleID|Reading|Date|Time",
                               "1|Silo 2, \"east\"|  12.5|2026-05-04|09:30:15",
                               "2|Wägebrücke||2026-05-05|09:30:15"}));
    QCOMPARE(office_->text(doc, 4, 1, 0), QString());
    // Date and time are typed cells, the reading stays text.
    QCOMPARE(office_->kind(doc, 2, 4, 0), QStringLiteral("value"));
    QCOMPARE(office_->kind(doc, 2, 5, 0), QStringLiteral("value"));
    QCOMPARE(office_->kind(doc, 2, 3, 0), QStringLiteral("text"));
}

QTEST_GUILESS_MAIN(CalcOutputTest)
#include "test_calc_output.moc"
