// The data store against real SQLite files in a scratch home.
#include "ChildProcess.h"
#include "TempHome.h"
#include "core/CfgTxt.h"
#include "core/store/Compaction.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"
#include "core/store/IndicatorConfigTables.h"
#include "core/store/OrderIndexes.h"
#include "core/store/ScaleCfgTable.h"
#include "core/store/StoredValues.h"
#include "core/store/SysCfg.h"

#include <QDir>
#include <QtTest>
#include <csignal>
#include <optional>
#include <sys/resource.h>

using namespace stellwyn::core;
using stellwyn::testsupport::TempHome;
namespace testsupport = stellwyn::testsupport;

namespace {

const QByteArray kNotADatabase = "Not a database: a user's own notes that must survive.\n";

QString svdataOf(const TempHome& home) {
    return home.file(QStringLiteral("svdata.mdb"));
}

Connection openNew(const TempHome& home) {
    createDatabase(home.path());
    return Connection::open(svdataOf(home));
}

QVariant single(Connection& c, const QString& sql, const QVariantList& values = {}) {
    QSqlQuery q = c.run(sql, values);
    return q.next() ? q.value(0) : QVariant();
}

QList<qint64> idsOf(const QList<DataColRow>& rows) {
    QList<qint64> ids;
    for (const DataColRow& row : rows) {
        ids << row.id;
    }
    return ids;
}

QList<qint64> netIdsOf(const QList<ScaleCfgRow>& rows) {
    QList<qint64> ids;
    for (const ScaleCfgRow& row : rows) {
        ids << row.netId.toLongLong();
    }
    return ids;
}

// A row as another tool might write it, with its own spelling of the type and of "yes".
void addRawScale(Connection& c, const QString& sctype, int netId, int active) {
    c.run(QStringLiteral("insert into ScaleCFG (sctype, NetID, Active) values (?, ?, ?)"),
          {sctype, netId, active});
}

QString warningSaid;

void keepWarning(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtWarningMsg) {
        warningSaid = text;
    }
}

// Runs the step in a child process whose files may not grow past `limit` bytes, as on a disk
// that is all but full, and gives what it said: the text of the error it threw, or its warning.
QString saidWithFilesCappedAt(rlim_t limit, const std::function<void()>& step) {
    const testsupport::ChildRun run = testsupport::runInChild([&](int fd) {
        // A write past the cap fails with EFBIG instead of ending the process.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit cap{limit, limit};
        ::setrlimit(RLIMIT_FSIZE, &cap);
        qInstallMessageHandler(keepWarning);
        QString said;
        try {
            step();
            said = warningSaid;
        } catch (const FatalError& e) {
            said = e.text();
        }
        return testsupport::writeAll(fd, said.toUtf8()) ? 0 : 1;
    });
    return QString::fromUtf8(run.told);
}

} // namespace

class TestStore : public QObject {
    Q_OBJECT

private slots:
    void connectionText_namesTheDataFileOfTheFolder();
    void dataSourceOf_takesThePathOfEitherSpelling_data();
    void dataSourceOf_takesThePathOfEitherSpelling();

    void open_missingFile_throwsAndCreatesNothing_data();
    void open_missingFile_throwsAndCreatesNothing();
    void open_fileThatIsNoDatabase_throwsAndKeepsTheFile();

    void createDatabase_neverOverwrites_data();
    void createDatabase_neverOverwrites();
    void createDatabase_makesTheHomeFolder();
    void createDatabase_firstStartSettingsRow();

    void yesNo_writtenMinusOneAndAnyNonZeroReadsTrue_data();
    void yesNo_writtenMinusOneAndAnyNonZeroReadsTrue();
    void writeSysCfg_storesWhatSetupSaves();
    void writeSysCfg_withoutRow_writesNothing();

    void activeRs485_filtersAndOrdersByNetId();
    void scaleCfgByType_splitsOnRs232();
    void findBySerialNo_stopsOnFirstMatch();
    void findBySerialNo_apostropheIsAClearError();
    void insertScaleCfg_linkDefaultRow();
    void updateScaleSetupFields_badNumberWritesNothing();

    void datacol_idKeepsRisingAfterClear();
    void datacol_sortOrders_data();
    void datacol_sortOrders();
    void datacol_readingLeftOutIsNull();
    void logText_storedInSortableForm_data();
    void logText_storedInSortableForm();
    void readingImport_longImportLeavesTheOrderIndexes_data();
    void readingImport_longImportLeavesTheOrderIndexes();
    void orderIndexes_replaceFormerOnesAndServeEveryOrder_data();
    void orderIndexes_replaceFormerOnesAndServeEveryOrder();

    void groups_saveAddsOnceThenRenames();
    void oneRecordTables_saveAddsOnceAndEmptyReadFails();

    void compaction_keepsEveryRowAndLeavesNoTemp_data();
    void compaction_keepsEveryRowAndLeavesNoTemp();
    void compaction_ofNonDatabase_failsAndKeepsTheFile();
    void compaction_besideAnotherStation_losesNoRow_data();
    void compaction_besideAnotherStation_losesNoRow();
    void diskFull_rewriteFails_losesNothingAndSaysWhy_data();
    void diskFull_rewriteFails_losesNothingAndSaysWhy();
};

void TestStore::connectionText_namesTheDataFileOfTheFolder() {
    QCOMPARE(connectionText(QStringLiteral("/srv/scales")),
             QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0; Data Source=") +
                 QDir::toNativeSeparators(QStringLiteral("/srv/scales/svdata.mdb")));
}

void TestStore::dataSourceOf_takesThePathOfEitherSpelling_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("path");
    QTest::newRow("with blank") << connectionText(QStringLiteral("/a/b"))
                                << QDir::toNativeSeparators(QStringLiteral("/a/b/svdata.mdb"));
    QTest::newRow("compaction spelling, no blank")
        << QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/a/b/svdata.mdb")
        << QStringLiteral("/a/b/svdata.mdb");
    QTest::newRow("more keys after") << QStringLiteral("Data Source= /x y/svdata.mdb ;Mode=Share")
                                     << QStringLiteral("/x y/svdata.mdb");
    QTest::newRow("plain path") << QStringLiteral(" /x/sccfg.mdb ")
                                << QStringLiteral("/x/sccfg.mdb");
}

void TestStore::dataSourceOf_takesThePathOfEitherSpelling() {
    QFETCH(QString, text);
    QFETCH(QString, path);
    QCOMPARE(dataSourceOf(text), path);
}

void TestStore::open_missingFile_throwsAndCreatesNothing_data() {
    QTest::addColumn<bool>("asConnectionText");
    QTest::newRow("path") << false;
    QTest::newRow("connection text") << true;
}

void TestStore::open_missingFile_throwsAndCreatesNothing() {
    QFETCH(bool, asConnectionText);
    TempHome home;
    const QString path = svdataOf(home);
    try {
        Connection::open(asConnectionText ? connectionText(home.path()) : path);
        QFAIL("a missing file opened");
    } catch (const DatabaseError& e) {
        QCOMPARE(e.text(),
                 QStringLiteral("Could not find file '%1'.").arg(QDir::toNativeSeparators(path)));
    }
    QVERIFY(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

void TestStore::open_fileThatIsNoDatabase_throwsAndKeepsTheFile() {
    TempHome home;
    home.write(QStringLiteral("svdata.mdb"), kNotADatabase);
    try {
        Connection::open(svdataOf(home));
        QFAIL("a text file opened as a database");
    } catch (const DatabaseError& e) {
        QVERIFY2(e.text().contains(QLatin1String("not a database")), qPrintable(e.text()));
    }
    QCOMPARE(home.read(QStringLiteral("svdata.mdb")), kNotADatabase);
}

void TestStore::createDatabase_neverOverwrites_data() {
    QTest::addColumn<bool>("svdataThere");
    QTest::addColumn<bool>("sccfgThere");
    QTest::newRow("neither") << false << false;
    QTest::newRow("svdata only") << true << false;
    QTest::newRow("sccfg only") << false << true;
    QTest::newRow("both") << true << true;
}

void TestStore::createDatabase_neverOverwrites() {
    QFETCH(bool, svdataThere);
    QFETCH(bool, sccfgThere);
    TempHome home;
    const QString svdata = QStringLiteral("svdata.mdb");
    const QString sccfg = QStringLiteral("sccfg.mdb");
    if (svdataThere) {
        home.write(svdata, kNotADatabase);
    }
    if (sccfgThere) {
        home.write(sccfg, kNotADatabase);
    }

    const CreateDatabaseResult result = createDatabase(home.path());

    QStringList created;
    QStringList leftAlone;
    (svdataThere ? leftAlone : created) << QDir::toNativeSeparators(home.file(svdata));
    (sccfgThere ? leftAlone : created) << QDir::toNativeSeparators(home.file(sccfg));
    QCOMPARE(result.created, created);
    QCOMPARE(result.leftAlone, leftAlone);
    for (const QString& name : {svdata, sccfg}) {
        const bool wasThere = name == svdata ? svdataThere : sccfgThere;
        if (wasThere) {
            QCOMPARE(home.read(name), kNotADatabase);
        } else {
            Connection c = Connection::open(home.file(name));
            QCOMPARE(single(c, QStringLiteral("select count(*) from ScaleCFG")).toInt(), 0);
        }
    }
    // Nothing of the building is left beside the files.
    QCOMPARE(
        QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
        2);
}

void TestStore::createDatabase_makesTheHomeFolder() {
    TempHome parent;
    const QString home = parent.file(QStringLiteral("new/station"));
    const CreateDatabaseResult result = createDatabase(home);
    QCOMPARE(result.created.size(), 2);
    QVERIFY(QFile::exists(home + QStringLiteral("/svdata.mdb")));
    QVERIFY(QFile::exists(home + QStringLiteral("/sccfg.mdb")));
}

void TestStore::createDatabase_firstStartSettingsRow() {
    TempHome home;
    Connection c = openNew(home);
    QCOMPARE(single(c, QStringLiteral("select count(*) from syscfg")).toInt(), 1);

    const std::optional<SysCfgRecord> row = readSysCfg(c);
    QVERIFY(row.has_value());
    QCOMPARE(row->commtype.toString(), QStringLiteral("RS232"));
    QCOMPARE(row->commport.toInt(), 1);
    QCOMPARE(row->netpolltime.toDouble(), 0.33);
    QCOMPARE(row->netdeltime.toDouble(), 0.01);
    QCOMPARE(row->rfnet.toInt(), 0);
    QCOMPARE(row->rfnetid.toString(), QStringLiteral("0"));
    QCOMPARE(row->smallfonts.toInt(), 0);
    QCOMPARE(row->tagblz.toInt(), 0);
    QCOMPARE(row->datacolenbstart.toInt(), 0);
    QCOMPARE(row->usbreset.toInt(), 0);
    for (const QVariant& enabled : row->slaveEnb) {
        QVERIFY(!enabled.isNull());
        QVERIFY(!isYes(enabled));
    }
    // The other tables start empty, and each holds the fields the program names.
    QCOMPARE(single(c, QStringLiteral("select count(*) from datacol")).toInt(), 0);
    c.run(QStringLiteral("select ID, ScaleID, Reading, Date, Time, \"Group\", TagID from DataCol"));
    c.run(QStringLiteral("select ID, sctype, NetID, SerialNo, Description, Active, polltime, baud, "
                         "\"Poll Time\", \"Poll Active\" from scalecfg"));
    c.run(QStringLiteral("select IDnum, description from groups"));
    for (const QString& table : {QStringLiteral("defaultgroups"), QStringLiteral("ocxfer"),
                                 QStringLiteral("defaultoutputs")}) {
        QVERIFY(!hasFirstRow(c, table == QLatin1String("ocxfer") ? OneRecordTable::ocxfer
                                : table == QLatin1String("defaultgroups")
                                    ? OneRecordTable::defaultgroups
                                    : OneRecordTable::defaultoutputs));
    }

    // The whole-connection read used by the settings load sees the same row.
    QCOMPARE(readSysCfg(connectionText(home.path())).commtype.toString(), QStringLiteral("RS232"));
}

void TestStore::yesNo_writtenMinusOneAndAnyNonZeroReadsTrue_data() {
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("yes");
    QTest::newRow("-1") << QVariant(-1) << true;
    QTest::newRow("1 from another tool") << QVariant(1) << true;
    QTest::newRow("255") << QVariant(255) << true;
    QTest::newRow("0") << QVariant(0) << false;
    QTest::newRow("null") << QVariant() << false;
}

void TestStore::yesNo_writtenMinusOneAndAnyNonZeroReadsTrue() {
    QFETCH(QVariant, stored);
    QFETCH(bool, yes);
    TempHome home;
    Connection c = openNew(home);
    c.run(QStringLiteral("insert into ScaleCFG (sctype, NetID, Active, \"Poll Active\") "
                         "values ('RS485', 130, coalesce(?, 0), coalesce(?, 0))"),
          {stored, stored});
    const QList<ScaleCfgRow> rows = allScaleCfg(c);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows[0].active, yes);
    QCOMPARE(rows[0].pollActive, yes);
    QCOMPARE(activeRs485ScaleCfg(c).size(), yes ? 1 : 0);
    QCOMPARE(isYes(stored), yes);

    // Written back through the program, true is -1 whatever it was.
    ScaleSetupFields fields{rows[0].sctype, rows[0].netId, rows[0].description, yes, {}, yes};
    QVERIFY(updateScaleSetupFields(c, rows[0].id, fields));
    QCOMPARE(single(c, QStringLiteral("select Active from ScaleCFG")).toInt(), yes ? -1 : 0);
    QCOMPARE(single(c, QStringLiteral("select \"Poll Active\" from ScaleCFG")).toInt(),
             yes ? -1 : 0);
}

void TestStore::writeSysCfg_storesWhatSetupSaves() {
    TempHome home;
    Connection c = openNew(home);
    SysCfgSettings s;
    s.commtype = QStringLiteral("USB485");
    s.commport = QStringLiteral("2");
    s.netpolltime = QStringLiteral("2");
    s.netdeltime = QStringLiteral("abc");
    s.usbreset = QStringLiteral("5");
    s.rfnet = true;
    s.smallfonts = false;
    s.datacolenbstart = true;
    s.rfnetid = 4;
    QVERIFY(writeSysCfg(c, s));

    const SysCfgRecord row = *readSysCfg(c);
    QCOMPARE(row.commtype.toString(), QStringLiteral("USB485"));
    QCOMPARE(row.commport.typeId(), QMetaType::LongLong);
    QCOMPARE(row.commport.toInt(), 2);
    QCOMPARE(row.netpolltime.toDouble(), 2.0);
    // A text that is no number stays as typed, for the settings load to refuse.
    QCOMPARE(row.netdeltime.toString(), QStringLiteral("abc"));
    QCOMPARE(row.usbreset.toInt(), 5);
    QCOMPARE(row.rfnet.toInt(), -1);
    QCOMPARE(row.smallfonts.toInt(), 0);
    QCOMPARE(row.datacolenbstart.toInt(), -1);
    QCOMPARE(row.rfnetid.toString(), QStringLiteral("4"));
    QCOMPARE(row.tagblz.toInt(), 0);
    QCOMPARE(single(c, QStringLiteral("select count(*) from syscfg")).toInt(), 1);
}

void TestStore::writeSysCfg_withoutRow_writesNothing() {
    TempHome home;
    Connection c = openNew(home);
    c.run(QStringLiteral("delete from syscfg"));
    QVERIFY(!writeSysCfg(c, SysCfgSettings{}));
    QCOMPARE(single(c, QStringLiteral("select count(*) from syscfg")).toInt(), 0);
    QVERIFY(!readSysCfg(c).has_value());
    QVERIFY_THROWS_EXCEPTION(DatabaseError, readSysCfg(connectionText(home.path())));
    std::array<SlavePlace, kSavedSlaves> places{};
    QVERIFY_THROWS_EXCEPTION(DatabaseError, writeSlaveLayout(c, places));
}

void TestStore::activeRs485_filtersAndOrdersByNetId() {
    TempHome home;
    Connection c = openNew(home);
    addRawScale(c, QStringLiteral("RS485"), 140, -1);
    addRawScale(c, QStringLiteral("rs485"), 131, -1);
    addRawScale(c, QStringLiteral("RS485"), 130, 0);
    addRawScale(c, QStringLiteral("RS232"), 120, -1);
    addRawScale(c, QStringLiteral("USB485"), 125, -1);
    addRawScale(c, QStringLiteral("RS485"), 135, 1);
    addRawScale(c, QStringLiteral("RS485"), 131, -1);

    const QList<ScaleCfgRow> rows = activeRs485ScaleCfg(c);
    QCOMPARE(netIdsOf(rows), (QList<qint64>{131, 131, 135, 140}));
    // Two rows may share a NetID; they keep the order they were made in.
    QVERIFY(rows[0].id < rows[1].id);
}

void TestStore::scaleCfgByType_splitsOnRs232() {
    TempHome home;
    Connection c = openNew(home);
    addRawScale(c, QStringLiteral("RS485"), 150, -1);
    addRawScale(c, QStringLiteral("RS232"), 140, 0);
    addRawScale(c, QStringLiteral("rs232"), 130, -1);
    addRawScale(c, QStringLiteral("USB485"), 120, 0);
    QCOMPARE(netIdsOf(scaleCfgByType(c, ScaleTypeFilter::rs232Only)), (QList<qint64>{130, 140}));
    QCOMPARE(netIdsOf(scaleCfgByType(c, ScaleTypeFilter::notRs232)), (QList<qint64>{120, 150}));
    QCOMPARE(netIdsOf(allScaleCfg(c)), (QList<qint64>{150, 140, 130, 120}));
}

void TestStore::findBySerialNo_stopsOnFirstMatch() {
    TempHome home;
    Connection c = openNew(home);
    const qint64 a =
        insertScaleCfg(c, linkDefaultScaleCfg(QStringLiteral("USB485"), QStringLiteral("A"),
                                              QStringLiteral("Unknown")));
    insertScaleCfg(c, linkDefaultScaleCfg(QStringLiteral("USB485"), QStringLiteral("B"),
                                          QStringLiteral("Unknown")));
    const qint64 usb =
        insertScaleCfg(c, linkDefaultScaleCfg(QStringLiteral("USB"), QStringLiteral(" Bench "),
                                              QStringLiteral(" FT12ab ")));

    QCOMPARE(findScaleCfgBySerialNo(c, QStringLiteral("Unknown"))->id, a);
    QCOMPARE(findScaleCfgBySerialNo(c, QStringLiteral("ft12AB"))->id, usb);
    QCOMPARE(findScaleCfgBySerialNo(c, QStringLiteral("FT12ab"))->description,
             QStringLiteral("Bench"));
    QVERIFY(!findScaleCfgBySerialNo(c, QStringLiteral("FT12")).has_value());
    QVERIFY(!findScaleCfgBySerialNo(c, QString()).has_value());
    QCOMPARE(findScaleCfgById(c, usb)->serialNo, QStringLiteral("FT12ab"));
    QVERIFY(!findScaleCfgById(c, 0).has_value());
}

void TestStore::findBySerialNo_apostropheIsAClearError() {
    TempHome home;
    Connection c = openNew(home);
    insertScaleCfg(c, linkDefaultScaleCfg(QStringLiteral("USB"), QStringLiteral("X"),
                                          QStringLiteral("O'Brien")));
    try {
        findScaleCfgBySerialNo(c, QStringLiteral("O'Brien"));
        QFAIL("an apostrophe searched");
    } catch (const DatabaseError& e) {
        QVERIFY2(e.text().contains(QLatin1String("\"O'Brien\"")), qPrintable(e.text()));
        QVERIFY2(e.text().contains(QLatin1String("apostrophe")), qPrintable(e.text()));
    }
    QCOMPARE(allScaleCfg(c).size(), 1);
}

void TestStore::insertScaleCfg_linkDefaultRow() {
    TempHome home;
    Connection c = openNew(home);
    const qint64 first = insertScaleCfg(c, setupNewScaleCfg(QStringLiteral("130"), true));
    const qint64 id = insertScaleCfg(c, linkDefaultScaleCfg(QStringLiteral("RS232"),
                                                            QStringLiteral(" Scale - RS232 "),
                                                            QStringLiteral("Unknown")));
    QVERIFY(id > first);

    const ScaleCfgRow setupRow = *findScaleCfgById(c, first);
    QCOMPARE(setupRow.sctype, QStringLiteral("RS485"));
    QCOMPARE(setupRow.description, QStringLiteral("SCALE RS485"));
    QCOMPARE(setupRow.serialNo, QString());
    QCOMPARE(setupRow.netId.toInt(), 130);
    QVERIFY(setupRow.active);
    QVERIFY(setupRow.polltime.isNull());
    QCOMPARE(findScaleCfgByNetId(c, 130)->id, first);

    const ScaleCfgRow row = *findScaleCfgById(c, id);
    QCOMPARE(row.sctype, QStringLiteral("RS232"));
    QCOMPARE(row.description, QStringLiteral("Scale - RS232"));
    QVERIFY(row.netId.isNull());
    QVERIFY(row.active);
    QCOMPARE(row.polltime.toDouble(), 0.5);
    QCOMPARE(row.baud.toInt(), 9600);
    QVERIFY(!row.pollActive);

    QVERIFY(deleteScaleCfg(c, first));
    QVERIFY(!deleteScaleCfg(c, first));
    QCOMPARE(allScaleCfg(c).size(), 1);
}

void TestStore::updateScaleSetupFields_badNumberWritesNothing() {
    TempHome home;
    Connection c = openNew(home);
    const qint64 id = insertScaleCfg(c, setupNewScaleCfg(130, true));

    ScaleSetupFields fields{QStringLiteral("RS485"), QStringLiteral("13O"),
                            QStringLiteral("Dock"),  false,
                            QStringLiteral("5"),     true};
    try {
        updateScaleSetupFields(c, id, fields);
        QFAIL("a NetID of 13O was stored");
    } catch (const DatabaseError& e) {
        QCOMPARE(e.text(),
                 QStringLiteral("The field NetID needs a whole number; \"13O\" is not one."));
    }
    fields.netId = QStringLiteral("131");
    fields.pollTime = QStringLiteral("five");
    QVERIFY_THROWS_EXCEPTION(DatabaseError, updateScaleSetupFields(c, id, fields));
    ScaleCfgRow row = *findScaleCfgById(c, id);
    QCOMPARE(row.netId.toInt(), 130);
    QCOMPARE(row.description, QStringLiteral("SCALE RS485"));
    QVERIFY(row.active);

    fields.pollTime = QStringLiteral("2.5");
    QVERIFY(updateScaleSetupFields(c, id, fields));
    QVERIFY(!updateScaleSetupFields(c, id + 1, fields));
    row = *findScaleCfgById(c, id);
    QCOMPARE(row.netId.toInt(), 131);
    QCOMPARE(row.description, QStringLiteral("Dock"));
    QCOMPARE(row.pollTime.toDouble(), 2.5);
    QVERIFY(!row.active);
    QVERIFY(row.pollActive);
}

void TestStore::datacol_idKeepsRisingAfterClear() {
    TempHome home;
    Connection c = openNew(home);
    const QDateTime at(QDate(2024, 3, 1), QTime(8, 0));
    qint64 last = 0;
    for (int i = 0; i < 3; ++i) {
        const qint64 id = insertReading(c, QStringLiteral("130"), QStringLiteral("  12.5 lb"), at);
        QVERIFY(id > last);
        last = id;
    }
    deleteAllReadings(c);
    QCOMPARE(countReadings(c), 0);
    const qint64 next = insertReading(c, QStringLiteral("130"), QStringLiteral("1"), at);
    QCOMPARE(next, last + 1);
    QCOMPARE(countReadings(c), 1);
}

void TestStore::datacol_sortOrders_data() {
    QTest::addColumn<int>("order");
    QTest::addColumn<QList<qint64>>("ids");
    // Rows 1..5 as stored below.
    QTest::newRow("store order") << int(DataColOrder::storeOrder) << QList<qint64>{1, 2, 3, 4, 5};
    QTest::newRow("ID") << int(DataColOrder::byId) << QList<qint64>{1, 2, 3, 4, 5};
    QTest::newRow("date, time") << int(DataColOrder::byDateTime) << QList<qint64>{3, 5, 2, 4, 1};
    QTest::newRow("scale, then time")
        << int(DataColOrder::byScaleId) << QList<qint64>{3, 2, 4, 1, 5};
    QTest::newRow("reading as text")
        << int(DataColOrder::byReading) << QList<qint64>{5, 3, 2, 1, 4};
}

void TestStore::datacol_sortOrders() {
    QFETCH(int, order);
    QFETCH(QList<qint64>, ids);
    TempHome home;
    Connection c = openNew(home);
    // Times that sort wrongly as unpadded or regional text: 9:00 after 10:00, 31/12 after 1/1.
    insertReading(c, QStringLiteral("b"), QStringLiteral("20"),
                  QDateTime(QDate(2024, 1, 10), QTime(9, 0)));
    insertReading(c, QStringLiteral("A"), QStringLiteral("100"),
                  QDateTime(QDate(2024, 1, 2), QTime(10, 0)));
    insertReading(c, QStringLiteral("a"), QStringLiteral("100"),
                  QDateTime(QDate(2023, 12, 31), QTime(23, 59, 59)));
    insertReading(c, QStringLiteral("B"), QStringLiteral("9"),
                  QDateTime(QDate(2024, 1, 2), QTime(10, 0, 1)));
    insertReading(c, QStringLiteral("c"), std::nullopt, QDateTime(QDate(2024, 1, 2), QTime(9, 59)));
    QCOMPARE(idsOf(readings(c, static_cast<DataColOrder>(order))), ids);
}

void TestStore::datacol_readingLeftOutIsNull() {
    TempHome home;
    Connection c = openNew(home);
    insertReading(c, QStringLiteral("131"), std::nullopt,
                  QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));
    insertReading(c, QStringLiteral("132"), QString(""),
                  QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));
    const QList<DataColRow> rows = readings(c, DataColOrder::byId);
    QVERIFY(rows[0].reading.isNull());
    QVERIFY(!rows[1].reading.isNull());
    QVERIFY(rows[0].group.isNull());
    QVERIFY(rows[0].tagId.isNull());
}

void TestStore::logText_storedInSortableForm_data() {
    QTest::addColumn<bool>("isDate");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("month first") << true << QByteArray("04/03/2004") << QByteArray("2004-04-03");
    QTest::newRow("short parts") << true << QByteArray(" 4/3/2004") << QByteArray("2004-04-03");
    QTest::newRow("year 99") << true << QByteArray("12/31/99") << QByteArray("1999-12-31");
    QTest::newRow("year 26") << true << QByteArray("1/2/26") << QByteArray("2026-01-02");
    QTest::newRow("stored form") << true << QByteArray("2004-04-03") << QByteArray("2004-04-03");
    QTest::newRow("month 13") << true << QByteArray("13/45/2020") << QByteArray();
    QTest::newRow("signed year") << true << QByteArray("04/03/-2004") << QByteArray();
    QTest::newRow("short time") << false << QByteArray("6:30:15") << QByteArray("06:30:15");
    QTest::newRow("no seconds") << false << QByteArray("23:59") << QByteArray("23:59:00");
    QTest::newRow("below zero") << false << QByteArray("-1:10:00") << QByteArray("-1:10:00");
    QTest::newRow("hour 24") << false << QByteArray("24:00:00") << QByteArray();
}

void TestStore::logText_storedInSortableForm() {
    QFETCH(bool, isDate);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, stored);
    const StoredText result = isDate ? storedDateFromLogText(text) : storedTimeFromLogText(text);
    QCOMPARE(result.view().toByteArray(), stored);
}

namespace {
const QString kCurrentIndexes =
    QStringLiteral("select count(*) from sqlite_master where type = 'index' and "
                   "name in ('datacol_datetime', 'datacol_scaleid', 'datacol_reading')");
const QString kFormerIndexes = QStringLiteral(
    "select count(*) from sqlite_master where type = 'index' and name like 'datacol_by_%'");

void importRows(Connection& c, int rows) {
    ReadingImport import(c, rows);
    for (int i = 0; i < rows; ++i) {
        const QByteArray reading = QByteArray::number(i % 997);
        import.add({"130", {}, reading, "1/2/2026", "09:30:15", {}});
    }
    import.commit();
}
} // namespace

void TestStore::readingImport_longImportLeavesTheOrderIndexes_data() {
    QTest::addColumn<bool>("committed");
    QTest::newRow("committed") << true;
    QTest::newRow("abandoned") << false;
}

void TestStore::readingImport_longImportLeavesTheOrderIndexes() {
    QFETCH(bool, committed);
    TempHome home;
    Connection c = openNew(home);
    prepareReadingStore(c);
    QCOMPARE(single(c, kCurrentIndexes).toInt(), 3);
    {
        ReadingImport import(c, 1000000);
        import.add({"130", "2", "  12.5", "1/2/2026", "09:30:15", "TAG17"});
        if (committed) {
            import.commit();
        }
    }
    waitForOrderIndexes();
    QCOMPARE(single(c, kCurrentIndexes).toInt(), 3);
    QCOMPARE(countReadings(c), committed ? 1 : 0);
    QCOMPARE(readings(c, DataColOrder::byReading).size(), committed ? 1 : 0);
}

void TestStore::orderIndexes_replaceFormerOnesAndServeEveryOrder_data() {
    QTest::addColumn<int>("rows");
    QTest::newRow("short table, built at once") << 10;
    QTest::newRow("long table, built on their own thread") << 60000;
}

// Files of earlier versions kept the ID as a key column of each index; the grid's pages must
// still come from an index in each order, never from a sort of the whole table.
void TestStore::orderIndexes_replaceFormerOnesAndServeEveryOrder() {
    QFETCH(int, rows);
    TempHome home;
    Connection c = openNew(home);
    importRows(c, rows);
    c.run(QStringLiteral("create index datacol_by_datetime on datacol (Date, Time, ID)"));
    c.run(QStringLiteral("create index datacol_by_reading on datacol (Reading, Date, Time, ID)"));
    prepareReadingStore(c);
    waitForOrderIndexes();
    QCOMPARE(single(c, kFormerIndexes).toInt(), 0);
    QCOMPARE(single(c, kCurrentIndexes).toInt(), 3);
    const QStringList orders{QStringLiteral("Date, Time, ID"),
                             QStringLiteral("ScaleID, Date, Time, ID"),
                             QStringLiteral("Reading, Date, Time, ID")};
    for (const QString& keys : orders) {
        for (const QString& direction : {QString(), QStringLiteral(" desc")}) {
            const QString order = QString(keys).replace(u',', direction + u',') + direction;
            QVariantList key{QStringLiteral("2026-01-02"), QStringLiteral("09:30:15"), 1};
            QStringList marks{QStringLiteral("?"), QStringLiteral("?"), QStringLiteral("?")};
            if (keys.count(u',') == 3) {
                key.prepend(QStringLiteral("130"));
                marks << QStringLiteral("?");
            }
            QSqlQuery plan = c.run(QStringLiteral("explain query plan select * from datacol where "
                                                  "(%1) > (%2) order by %3 limit 256")
                                       .arg(keys, marks.join(u','), order),
                                   key);
            QString steps;
            while (plan.next()) {
                steps += plan.value(3).toString() + u';';
            }
            QVERIFY2(steps.contains(u"USING INDEX datacol_") && !steps.contains(u"TEMP B-TREE"),
                     qPrintable(order + QStringLiteral(": ") + steps));
        }
    }
    QCOMPARE(readings(c, DataColOrder::byReading).size(), rows);
}

void TestStore::groups_saveAddsOnceThenRenames() {
    TempHome home;
    Connection c = openNew(home);
    QVERIFY(groupsEmpty(c));
    QVERIFY(saveGroupDescription(c, 7, QStringLiteral("Scale #7")));
    QVERIFY(!saveGroupDescription(c, 7, QStringLiteral("7")));
    QVERIFY(saveGroupDescription(c, 0, QStringLiteral("Scale - RS232")));
    QVERIFY(!groupsEmpty(c));
    QVERIFY(groupExists(c, 7));
    QVERIFY(!groupExists(c, 8));
    QCOMPARE(single(c, QStringLiteral("select count(*) from groups")).toInt(), 2);
    QCOMPARE(single(c, QStringLiteral("select description from groups where IDnum = 7")).toString(),
             QStringLiteral("7"));
}

void TestStore::oneRecordTables_saveAddsOnceAndEmptyReadFails() {
    TempHome home;
    Connection c = openNew(home);
    QVERIFY_THROWS_EXCEPTION(DatabaseError, requireFirstRow(c, OneRecordTable::ocxfer));
    QVERIFY(ensureFirstRow(c, OneRecordTable::ocxfer));
    QVERIFY(!ensureFirstRow(c, OneRecordTable::ocxfer));
    requireFirstRow(c, OneRecordTable::ocxfer);
    QCOMPARE(single(c, QStringLiteral("select count(*) from ocxfer")).toInt(), 1);
    QVERIFY(!hasFirstRow(c, OneRecordTable::defaultoutputs));
    QVERIFY(ensureFirstRow(c, OneRecordTable::defaultgroups));
    QVERIFY(hasFirstRow(c, OneRecordTable::defaultgroups));
}

void TestStore::compaction_keepsEveryRowAndLeavesNoTemp_data() {
    QTest::addColumn<QByteArray>("staleTemp");
    QTest::newRow("no temp.mdb") << QByteArray();
    QTest::newRow("stale temp.mdb") << kNotADatabase;
}

void TestStore::compaction_keepsEveryRowAndLeavesNoTemp() {
    QFETCH(QByteArray, staleTemp);
    TempHome home;
    QList<DataColRow> before;
    qint64 lastId = 0;
    {
        Connection c = openNew(home);
        for (int i = 0; i < 50; ++i) {
            lastId = insertReading(c, QString::number(128 + i % 3), QString::number(i * 7),
                                   QDateTime(QDate(2024, 2, 1 + i % 20), QTime(i % 24, i)));
        }
        // Deleted rows are what compaction gives back; the ID counter must survive it.
        c.run(QStringLiteral("delete from datacol where ID % 2 = 0"));
        before = readings(c, DataColOrder::byId);
    }
    if (!staleTemp.isEmpty()) {
        home.write(QStringLiteral("temp.mdb"), staleTemp);
    }

    compactDatabase(home.path());

    QVERIFY(!home.exists(QStringLiteral("temp.mdb")));
    Connection c = Connection::open(svdataOf(home));
    const QList<DataColRow> after = readings(c, DataColOrder::byId);
    QCOMPARE(after.size(), before.size());
    for (qsizetype i = 0; i < after.size(); ++i) {
        QCOMPARE(after[i].id, before[i].id);
        QCOMPARE(after[i].reading, before[i].reading);
        QCOMPARE(after[i].date, before[i].date);
        QCOMPARE(after[i].time, before[i].time);
    }
    QCOMPARE(readSysCfg(c)->commtype.toString(), QStringLiteral("RS232"));
    QCOMPARE(
        insertReading(c, QStringLiteral("1"), QStringLiteral("1"), QDateTime::currentDateTime()),
        lastId + 1);
}

void TestStore::compaction_ofNonDatabase_failsAndKeepsTheFile() {
    TempHome home;
    home.write(QStringLiteral("svdata.mdb"), kNotADatabase);
    home.write(QStringLiteral("temp.mdb"), "stale");
    try {
        compactDatabase(home.path());
        QFAIL("a text file was compacted");
    } catch (const FatalError& e) {
        QVERIFY2(e.text().contains(QLatin1String("not a database")), qPrintable(e.text()));
    }
    QCOMPARE(home.read(QStringLiteral("svdata.mdb")), kNotADatabase);
    QVERIFY(!home.exists(QStringLiteral("temp.mdb")));
}

void TestStore::compaction_besideAnotherStation_losesNoRow_data() {
    QTest::addColumn<bool>("writing");
    QTest::newRow("its handle open and idle") << false;
    QTest::newRow("in the middle of a write") << true;
}

// Another station (a second connection: SQLite locks it as it would another process) has the
// database open while this one starts; its row lands in the file everyone reads, or the
// compaction fails naming the file.
void TestStore::compaction_besideAnotherStation_losesNoRow() {
    QFETCH(bool, writing);
    TempHome home;
    { Connection created = openNew(home); }
    Connection other = Connection::open(svdataOf(home));
    const QDateTime at(QDate(2024, 3, 1), QTime(10, 0));
    std::optional<Transaction> write;
    if (writing) {
        write.emplace(other);
        insertReading(other, QStringLiteral("130"), QStringLiteral("12.5"), at);
        try {
            compactDatabase(home.path());
            QFAIL("compacted under another station's write");
        } catch (const DatabaseError& e) {
            QVERIFY2(e.text().contains(QDir::toNativeSeparators(svdataOf(home))),
                     qPrintable(e.text()));
        }
        write->commit();
    } else {
        compactDatabase(home.path());
        insertReading(other, QStringLiteral("130"), QStringLiteral("12.5"), at);
    }
    Connection reader = Connection::open(svdataOf(home));
    const QList<DataColRow> rows = readings(reader, DataColOrder::byId);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows[0].reading, QStringLiteral("12.5"));
}

void TestStore::diskFull_rewriteFails_losesNothingAndSaysWhy_data() {
    QTest::addColumn<QString>("file");
    QTest::newRow("cfg.txt given another folder") << "cfg.txt";
    QTest::newRow("svdata.mdb compacted at start") << "svdata.mdb";
}

void TestStore::diskFull_rewriteFails_losesNothingAndSaysWhy() {
    QFETCH(QString, file);
    TempHome home;
    const QString path = home.file(file);
    QString said;
    if (file == u"cfg.txt") {
        const QByteArray before = "/srv/scales\n";
        home.write(file, before);
        const QString longer = QStringLiteral("/srv/") + QString(200, u'w');
        said = saidWithFilesCappedAt(64, [&] { cfgtxt::write(path, longer); });
        QCOMPARE(home.read(file), before);
        QVERIFY2(said.contains(QStringLiteral("File too large")), qPrintable(said));
    } else {
        QList<DataColRow> before;
        {
            Connection c = openNew(home);
            Transaction t(c);
            for (int i = 0; i < 2000; ++i) {
                insertReading(c, QStringLiteral("130"), QString::number(i),
                              QDateTime(QDate(2024, 2, 1), QTime(i / 3600, i / 60 % 60, i % 60)));
            }
            t.commit();
            c.run(QStringLiteral("delete from datacol where ID % 2 = 0"));
            before = readings(c, DataColOrder::byId);
        }
        const qint64 size = QFileInfo(path).size();
        said = saidWithFilesCappedAt(static_cast<rlim_t>(size / 4),
                                     [&] { compactDatabase(home.path()); });
        Connection c = Connection::open(path);
        QCOMPARE(single(c, QStringLiteral("pragma integrity_check")).toString(),
                 QStringLiteral("ok"));
        QCOMPARE(idsOf(readings(c, DataColOrder::byId)), idsOf(before));
    }
    QVERIFY2(said.contains(QDir::toNativeSeparators(path)), qPrintable(said));
    // Nor is any half-written copy left beside it.
    QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).filter(file),
             QStringList{file});
}

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
