// The network scan table: its rows after fillgrid, the row click, and the "Show" options.
#include "ScannerFixture.h"
#include "acquisition/ScanTable.h"

#include <QTest>

using namespace stellwyn;
using acquisition::ScanTable;
using acquisitiontest::ScannerFixture;

class ScanTableTest : public QObject {
    Q_OBJECT
private slots:
    void fillgrid_oneRowPerScaleInTableOrder_data();
    void fillgrid_oneRowPerScaleInTableOrder();
    void rowClick_picksThatScaleInCombo1();
    void showOptions_setPanesAndHeight_data();
    void showOptions_setPanesAndHeight();
};

void ScanTableTest::fillgrid_oneRowPerScaleInTableOrder_data() {
    QTest::addColumn<int>("scales");
    QTest::addColumn<QStringList>("cells"); // row by row, description then reading
    QTest::newRow("no scales") << 0 << QStringList{};
    QTest::newRow("three scales") << 3 << QStringList{"Scale 0", "  1.0",   "Scale 1",
                                                      "",        "Scale 2", "  3.0"};
}

void ScanTableTest::fillgrid_oneRowPerScaleInTableOrder() {
    QFETCH(int, scales);
    QFETCH(QStringList, cells);
    ScannerFixture s;
    ScanTable table(s.context);
    for (int i = 0; i < scales; ++i) {
        s.addScale(130 + i, QStringLiteral("  Scale %1 ").arg(i));
        s.m.scaleweight[i] = i == 1 ? QString() : QStringLiteral("  %1.0").arg(i + 1);
    }
    // Rows left from an earlier screen go; the rows are the table's, no more.
    s.f.NetList.addRow({"stale", "9.9"});
    int writes = 0;
    s.f.NetList.Changed = [&writes] { ++writes; };

    table.fillgrid();

    QStringList shown;
    for (int row = 1; row < s.f.NetList.rows(); ++row) {
        shown << s.f.NetList.text(row, 0) << s.f.NetList.text(row, 1);
    }
    QCOMPARE(shown, cells);
    QCOMPARE(writes, scales);
}

void ScanTableTest::rowClick_picksThatScaleInCombo1() {
    ScannerFixture s;
    ScanTable table(s.context);
    for (int i = 0; i < 3; ++i) {
        s.addScale(130 + i, QStringLiteral("Scale %1").arg(i));
    }
    QList<int> picked;
    s.f.Combo1.Click = [&] { picked << s.f.Combo1.listIndex(); };
    s.f.NetList.row = 3;
    table.NetList_Click();
    QCOMPARE(picked, QList<int>{2});
}

void ScanTableTest::showOptions_setPanesAndHeight_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<bool>("netwindow");
    QTest::addColumn<bool>("datawindow");
    QTest::addColumn<int>("height");
    QTest::newRow("Network Scan") << "netscan" << true << false << 8050;
    QTest::newRow("None") << "none" << false << false << 5905;
    QTest::newRow("Data Collection") << "datacol" << false << true << 8050;
}

void ScanTableTest::showOptions_setPanesAndHeight() {
    QFETCH(QString, option);
    QFETCH(bool, netwindow);
    QFETCH(bool, datawindow);
    QFETCH(int, height);
    ScannerFixture s;
    ScanTable table(s.context);
    table.attach();
    s.f.netwindowVisible = !netwindow;
    s.f.datawindowVisible = !datawindow;
    if (option == u"netscan") {
        s.f.opt_netscan.setValue(true);
    } else if (option == u"none") {
        s.f.opt_none.setValue(true);
    } else {
        table.opt_datacol_Click();
    }
    QCOMPARE(s.f.netwindowVisible, netwindow);
    QCOMPARE(s.f.datawindowVisible, datawindow);
    QCOMPARE(s.f.height, height);
}

QTEST_GUILESS_MAIN(ScanTableTest)
#include "test_scan_table.moc"
