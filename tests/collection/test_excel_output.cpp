// The copy of stored readings into a spreadsheet, on the recording backend: what a real office
// makes hard to stage (an overwritten header and row, a protected sheet) and the two messages
// that untick "Excel Output". Where rows land in a real office is the Calc test's.
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
        office.books.append(testsupport::RecordingSpreadsheet::Sheet{});
    }

    qint64 storedRows() {
        core::Connection c = core::Connection::open(m.dataconn);
        return core::countReadings(c);
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
    void header_andAnExistingRow_areOverwritten();
    void unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow_data();
    void unreachableSheet_saysSoOrNothing_andKeepsTheStoredRow();
};

void ExcelOutputTest::header_andAnExistingRow_areOverwritten() {
    Pane p;
    testsupport::RecordingSpreadsheet::Sheet& sheet = p.office.books[0];
    sheet.cells[{1, 2}] = QStringLiteral("Weight (kg)");
    sheet.cells[{2, 1}] = QStringLiteral("user's own");
    p.f.Combo1.setListIndex(0);
    p.f.btn_LogData.Click();

    QCOMPARE(p.office.row(1), header);
    QCOMPARE(p.office.row(2), p.dataRow("SCALE 130", "  1.5", -1));
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
    p.office.books[0].locked = locked;
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
        QVERIFY(p.office.books[0].cells.isEmpty());
    }
}

QTEST_GUILESS_MAIN(ExcelOutputTest)
#include "test_excel_output.moc"
