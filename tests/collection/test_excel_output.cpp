// The copy of stored readings into an open spreadsheet: where the header and the rows land,
// the two messages that untick "Excel Output", and the failures passed over in silence.
#include "RecordingDialogs.h"
#include "RecordingSpreadsheet.h"
#include "TempHome.h"
#include "collection/ExcelInterface.h"
#include "collection/ReadingCollection.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QTest>

using namespace stellwyn;

namespace {

const QStringList header{"ScaleID", "Reading", "Time", "Date", "ID"};

// The collection pane with "Excel Output" ticked, three scales with readings, and a spreadsheet
// program with one blank workbook.
struct Pane {
    Pane() : collection(m, f, clock), excel(m, f, clock, dialogs, office) {
        core::createDatabase(home.path());
        m.dataconn = core::connectionText(home.path());
        const int ids[] = {130, 131, 132};
        for (int i = 0; i < 3; ++i) {
            m.netid[i] = ids[i];
            m.scaledesc[i] = QStringLiteral("SCALE %1").arg(ids[i]);
            m.scaleweight[i] = QStringLiteral("  %1.5").arg(i + 1);
            f.Combo1.addItem(m.scaledesc[i]);
        }
        m.scalecount = 3;
        collection.excelOutput = [this](int slot) { excel.excel_write_reading(slot); };
        collection.attach();
        f.chk_Excel.setValue(1);
        office.running = true;
        office.books.append(testsupport::RecordingSpreadsheet::Book{});
    }

    qint64 storedRows() {
        core::Connection c = core::Connection::open(m.dataconn);
        return core::countReadings(c);
    }
    // Rows stored before the test's own, so that the next ID is known.
    void storeEarlierRows(int count) {
        core::Connection c = core::Connection::open(m.dataconn);
        for (int i = 0; i < count; ++i) {
            core::insertReading(c, QStringLiteral("1"), QStringLiteral("0"), clock.now());
        }
    }
    QStringList dataRow(const QString& desc, const QString& weight, int id) const {
        return {desc, weight, QStringLiteral("09:30:00"), QStringLiteral("2026-05-04"),
                QString::number(id)};
    }

    testsupport::TempHome home;
    core::VirtualClock clock{QDateTime(QDate(2026, 5, 4), QTime(9, 30))};
    core::Module1 m;
    core::Form1Controls f;
    testsupport::RecordingDialogs dialogs;
    testsupport::RecordingSpreadsheet office;
    collection::ReadingCollection collection;
    collection::ExcelInterface excel;
};

} // namespace

class ExcelOutputTest : public QObject {
    Q_OBJECT
private slots:
    void saveCurrent_writesSlotZeroBelowTheHeaderThenFillsDownward();
    void saveAll_putsEachRowOnItsIdPlusOne();
    void header_andAnExistingRow_areOverwritten();
    void firstWorkbook_activeSheet_onlyIsWritten();
    void unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow_data();
    void unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow();
};

void ExcelOutputTest::saveCurrent_writesSlotZeroBelowTheHeaderThenFillsDownward() {
    Pane p;
    p.f.Combo1.setListIndex(2);
    p.f.btn_LogData.Click();
    p.f.btn_LogData.Click();

    QCOMPARE(p.office.row(0, 1), header);
    // Slot 0's reading whichever scale is selected; the ID column holds the row counter as it
    // stood, -1 on the first of a run.
    QCOMPARE(p.office.row(0, 2), p.dataRow("SCALE 130", "  1.5", -1));
    QCOMPARE(p.office.row(0, 3), p.dataRow("SCALE 130", "  1.5", 2));
    QCOMPARE(p.m.excelrow, std::int16_t(4));
    QCOMPARE(p.storedRows(), 2);
    QCOMPARE(p.dialogs.texts(), QStringList{});
}

void ExcelOutputTest::saveAll_putsEachRowOnItsIdPlusOne() {
    Pane p;
    p.storeEarlierRows(6);
    p.f.btn_dataLogAll.Click();

    QCOMPARE(p.office.row(0, 8), p.dataRow("SCALE 130", "  1.5", 7));
    QCOMPARE(p.office.row(0, 9), p.dataRow("SCALE 131", "  2.5", 8));
    QCOMPARE(p.office.row(0, 10), p.dataRow("SCALE 132", "  3.5", 9));
    QCOMPARE(p.office.row(0, 2), QStringList(5, QString()));
    QCOMPARE(p.m.excelrow, std::int16_t(11));
    // The cells are typed: a date and a time, not text.
    QCOMPARE(p.office.cell(0, 8, 4).typeId(), QMetaType::QDate);
    QCOMPARE(p.office.cell(0, 8, 3).typeId(), QMetaType::QTime);
}

void ExcelOutputTest::header_andAnExistingRow_areOverwritten() {
    Pane p;
    testsupport::RecordingSpreadsheet::Sheet& sheet = p.office.books[0].sheets[0];
    sheet.cells[{1, 2}] = QStringLiteral("Weight (kg)");
    sheet.cells[{2, 1}] = QStringLiteral("user's own");
    p.f.Combo1.setListIndex(0);
    p.f.btn_LogData.Click();

    QCOMPARE(p.office.row(0, 1), header);
    QCOMPARE(p.office.row(0, 2), p.dataRow("SCALE 130", "  1.5", -1));
}

void ExcelOutputTest::firstWorkbook_activeSheet_onlyIsWritten() {
    Pane p;
    p.office.books[0].sheets.append(testsupport::RecordingSpreadsheet::Sheet{});
    p.office.books[0].active = 1;
    p.office.books.append(testsupport::RecordingSpreadsheet::Book{});
    p.f.Combo1.setListIndex(0);
    p.f.btn_LogData.Click();

    QCOMPARE(p.office.row(0, 2), p.dataRow("SCALE 130", "  1.5", -1));
    QVERIFY(p.office.books[0].sheets[0].cells.isEmpty());
    QVERIFY(p.office.books[1].sheets[0].cells.isEmpty());
}

void ExcelOutputTest::unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow_data() {
    QTest::addColumn<bool>("running");
    QTest::addColumn<int>("books");
    QTest::addColumn<bool>("locked");
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<int>("excelOutput");
    QTest::addColumn<int>("excelrow");

    QTest::newRow("no office") << false << 1 << false
                               << QStringList{"message: Please open Microsoft Excel"} << 0 << 0;
    // The row counter goes on even so: only the sheet's steps fail.
    QTest::newRow("no workbook")
        << true << 0 << false
        << QStringList{"message: Please open a spreedsheet in Microsoft Excel"} << 0 << 3;
    QTest::newRow("protected sheet") << true << 1 << true << QStringList{} << 1 << 3;
}

void ExcelOutputTest::unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow() {
    QFETCH(bool, running);
    QFETCH(int, books);
    QFETCH(bool, locked);
    QFETCH(QStringList, said);
    QFETCH(int, excelOutput);
    QFETCH(int, excelrow);

    Pane p;
    p.office.running = running;
    p.office.books[0].sheets[0].locked = locked;
    if (books == 0) {
        p.office.books.clear();
    }
    p.f.Combo1.setListIndex(1);
    p.f.btn_LogData.Click();

    QCOMPARE(p.dialogs.texts(), said);
    QCOMPARE(p.f.chk_Excel.value(), excelOutput);
    QCOMPARE(p.m.excelrow, std::int16_t(excelrow));
    QCOMPARE(p.storedRows(), 1);
    if (books > 0) {
        QVERIFY(p.office.books[0].sheets[0].cells.isEmpty());
    }
}

QTEST_GUILESS_MAIN(ExcelOutputTest)
#include "test_excel_output.moc"
