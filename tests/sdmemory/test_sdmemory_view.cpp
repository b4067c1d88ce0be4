// The SD screens as the operator works them: the Setup group's buttons and check box over a
// folder that stands in for the card, and the drive settings dialog's OK and Cancel.
#include "FakeDriveQueries.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "collection/DataColModel.h"
#include "core/Module1.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "sdmemory/SdMemoryOptions.h"
#include "sdmemory/SdMemoryOptionsView.h"
#include "sdmemory/SdSetting.h"
#include "sdmemory/SdSettingView.h"
#include "sim/KlDatWriter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtTest>

using namespace stellwyn;
using namespace stellwyn::sdmemory;
using sdtest::FakeDriveQueries;

class SdMemoryViewTest : public QObject {
    Q_OBJECT

    testsupport::TempHome home;
    core::Module1 m;
    testsupport::RecordingDialogs dialogs;
    FakeDriveQueries queries;

private slots:
    void init() {
        core::createDatabase(home.path());
        m.cfgconn = core::connectionText(home.path());
        m.dataconn = m.cfgconn;
        dialogs.said.clear();
    }

    void readDatFile_fromAFolderShowsItsRowsInTheGrid() {
        sim::KlDatOptions card;
        card.records = 50;
        QString error;
        QVERIFY(sim::writeKlDat(home.file(QStringLiteral("KL.Dat")), card, &error));
        const QByteArray first = sim::klDatLines(card).first();
        m.sddrivepath = home.path() + u'/';

        QGroupBox group;
        new QVBoxLayout(&group);
        SdMemoryOptions logic(m, dialogs, queries);
        SdMemoryOptionsView view(logic, &group);
        group.show();
        collection::DataColModel grid;
        grid.bind(m.dataconn, core::DataColOrder::storeOrder);
        auto* read = group.findChild<QPushButton*>(QStringLiteral("Read_Dat_File"));
        auto* eraseAfter = group.findChild<QCheckBox*>(QStringLiteral("chk_erase_after_read"));
        QVERIFY(eraseAfter->isChecked());

        eraseAfter->click();
        QTest::mouseClick(read, Qt::LeftButton);
        grid.refresh(core::DataColOrder::storeOrder);
        QCOMPARE(grid.rowCount(), card.records);
        QCOMPARE(grid.rowAt(0).scaleId, QStringLiteral("130"));
        QCOMPARE(grid.rowAt(0).reading.toString(),
                 QString::fromLatin1(first.mid(first.indexOf('%') - 7, 7)));

        eraseAfter->click();
        QTest::mouseClick(read, Qt::LeftButton);
        grid.refresh(core::DataColOrder::storeOrder);
        QCOMPARE(grid.rowCount(), 2 * card.records);
        QCOMPARE(QFileInfo(home.file(QStringLiteral("KL.Dat"))).size(), 3);
        QCOMPARE(dialogs.texts(),
                 (QStringList{"message: Finished reading Data",
                              "message: Finished reading Data and Erased KL.Dat file"}));
    }

    // OK takes the drive chosen in the list, with its separator; Cancel and Escape keep the path
    // as it stands, which is the card that the search at load found.
    void sdSetting_okTakesTheListedDriveCancelKeepsThePath_data() {
        QTest::addColumn<QString>("close");
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("chosen");
        QTest::newRow("OK") << "cmd_OK"
                            << "//" << 1;
        QTest::newRow("Cancel") << "cmd_Cancel"
                                << "/media/card/" << 0;
        QTest::newRow("Escape") << ""
                                << "/media/card/" << 0;
    }
    void sdSetting_okTakesTheListedDriveCancelKeepsThePath() {
        QFETCH(QString, close);
        QFETCH(QString, path);
        QFETCH(int, chosen);
        queries = FakeDriveQueries();
        queries.add(QStringLiteral("/"), FakeDriveQueries::Drive{});
        queries.add(QStringLiteral("/media/card/"), FakeDriveQueries::card(sdtest::card32));
        m.sddrivepath.clear();
        m.sddrivechosen = 0;
        SdSetting form(m, dialogs, queries);
        form.Form_Load();
        SdSettingView view(form);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        auto* drives = view.findChild<QComboBox*>(QStringLiteral("Drive1"));
        QCOMPARE(drives->currentText(), QStringLiteral("/media/card/"));
        drives->setCurrentIndex(0);
        if (close.isEmpty()) {
            QTest::keyClick(&view, Qt::Key_Escape);
        } else {
            QTest::mouseClick(view.findChild<QPushButton*>(close), Qt::LeftButton);
        }
        QVERIFY(!view.isVisible());
        QCOMPARE(m.sddrivepath, path);
        QCOMPARE(int(m.sddrivechosen), chosen);
    }
};

QTEST_MAIN(SdMemoryViewTest)
#include "test_sdmemory_view.moc"
