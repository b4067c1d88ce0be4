#include "core/store/CreateDatabase.h"

#include "core/store/Connection.h"
#include "core/store/StoredValues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace stellwyn::core {

namespace {

// Text columns compare and sort without regard to case, as the old store did, so a row typed
// "rs485" is still an RS485 row and "order by scaleid" groups the same name together. The
// queries say COLLATE NOCASE again where they compare, for files made by other tools.
//
// Yes/no columns hold -1 or 0 and are never null, as the old store's were. Number columns
// that the Setup screen fills from a text box are NUMERIC: a number text is stored as a
// number, and any other text is kept, to be refused by whoever reads it as a number.

QString slaveColumns() {
    QStringList columns;
    for (int k = 0; k < 9; ++k) {
        columns << QStringLiteral("slave%1enb INTEGER NOT NULL DEFAULT 0").arg(k);
    }
    for (int k = 0; k < 9; ++k) {
        columns << QStringLiteral("slave%1left INTEGER").arg(k);
    }
    for (int k = 0; k < 9; ++k) {
        columns << QStringLiteral("slave%1top INTEGER").arg(k);
    }
    return columns.join(QStringLiteral(",\n  "));
}

QString syscfgTable() {
    return QStringLiteral("create table syscfg (\n"
                          "  commtype TEXT COLLATE NOCASE,\n"
                          "  commport INTEGER,\n"
                          "  rfnet INTEGER NOT NULL DEFAULT 0,\n"
                          "  smallfonts INTEGER NOT NULL DEFAULT 0,\n"
                          "  rfnetid TEXT COLLATE NOCASE,\n"
                          "  tagblz INTEGER,\n"
                          "  netpolltime NUMERIC,\n"
                          "  netdeltime NUMERIC,\n"
                          "  datacolenbstart INTEGER NOT NULL DEFAULT 0,\n"
                          "  usbreset NUMERIC,\n  ") +
           slaveColumns() + QStringLiteral(")");
}

const QString kScaleCfgTable = QStringLiteral("create table ScaleCFG (\n"
                                              "  ID INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                                              "  sctype TEXT COLLATE NOCASE,\n"
                                              "  NetID INTEGER,\n"
                                              "  SerialNo TEXT COLLATE NOCASE,\n"
                                              "  Description TEXT COLLATE NOCASE,\n"
                                              "  Active INTEGER NOT NULL DEFAULT 0,\n"
                                              "  polltime NUMERIC,\n"
                                              "  baud INTEGER,\n"
                                              "  \"Poll Time\" NUMERIC,\n"
                                              "  \"Poll Active\" INTEGER NOT NULL DEFAULT 0)");

// AUTOINCREMENT, so that an ID once given is never given again, also after "Clear List".
const QString kDataColTable = QStringLiteral("create table datacol (\n"
                                             "  ID INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                                             "  ScaleID TEXT COLLATE NOCASE,\n"
                                             "  Reading TEXT COLLATE NOCASE,\n"
                                             "  Date TEXT,\n"
                                             "  Time TEXT,\n"
                                             "  \"Group\" TEXT COLLATE NOCASE,\n"
                                             "  TagID TEXT COLLATE NOCASE)");

// A group setup: its key and name, then the six values and six one-byte settings that its
// transfer frames carry.
QString groupValueColumns() {
    QStringList columns;
    for (int n = 1; n <= 6; ++n) {
        columns << QStringLiteral("value%1 NUMERIC").arg(n);
    }
    for (int n = 3; n <= 8; ++n) {
        columns << QStringLiteral("byte%1 INTEGER").arg(n);
    }
    return columns.join(QStringLiteral(", "));
}

// An output configuration: 44 items, 0..35 for the frames A to F, 36..41 for G, 42..43 for H.
QString outputItemColumns() {
    QStringList columns;
    for (int n = 0; n < 44; ++n) {
        columns << QStringLiteral("item%1 TEXT").arg(n);
    }
    return columns.join(QStringLiteral(", "));
}

QStringList svdataStatements() {
    return {
        syscfgTable(),
        kScaleCfgTable,
        kDataColTable,
        QStringLiteral("create table groups (IDnum INTEGER, description TEXT COLLATE NOCASE, ") +
            groupValueColumns() + QStringLiteral(")"),
        QStringLiteral("create table defaultgroups (description TEXT COLLATE NOCASE, ") +
            groupValueColumns() + QStringLiteral(")"),
        QStringLiteral("create table ocxfer (") + outputItemColumns() + QStringLiteral(")"),
        QStringLiteral("create table defaultoutputs (") + outputItemColumns() + QStringLiteral(")"),
    };
}

// The row of a first start: what the Setup screen would show and save.
void insertFirstSysCfgRow(Connection& connection) {
    connection.run(
        QStringLiteral("insert into syscfg (commtype, commport, netpolltime, netdeltime, "
                       "rfnet, rfnetid, smallfonts, tagblz, datacolenbstart, usbreset) "
                       "values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        {QStringLiteral("RS232"), 1, 0.33, 0.01, kNo, QStringLiteral("0"), kNo, 0, kNo, 0});
}

// Builds the file under a scratch name beside its place and moves it in only when whole, and
// only when nothing has taken the name meanwhile. Returns false when something had.
bool buildFile(const QString& home, const QString& target, void (*fill)(Connection& connection)) {
    QTemporaryDir scratch(home + QStringLiteral("/.stellwyn-create-XXXXXX"));
    if (!scratch.isValid()) {
        throw DatabaseError(QStringLiteral("Could not create a file in '%1': %2")
                                .arg(QDir::toNativeSeparators(home), scratch.errorString()));
    }
    const QString building = scratch.filePath(QFileInfo(target).fileName());
    {
        QFile empty(building);
        if (!empty.open(QIODevice::WriteOnly)) {
            throw DatabaseError(QStringLiteral("Could not create '%1': %2")
                                    .arg(QDir::toNativeSeparators(building), empty.errorString()));
        }
    }
    {
        Connection connection = Connection::open(building);
        Transaction transaction(connection);
        fill(connection);
        transaction.commit();
    }
    if (!QFile::rename(building, target)) {
        if (QFileInfo::exists(target)) {
            return false;
        }
        throw DatabaseError(
            QStringLiteral("Could not create '%1'.").arg(QDir::toNativeSeparators(target)));
    }
    return true;
}

void fillSvdata(Connection& connection) {
    for (const QString& statement : svdataStatements()) {
        connection.run(statement);
    }
    insertFirstSysCfgRow(connection);
}

void fillSccfg(Connection& connection) {
    connection.run(kScaleCfgTable);
}

} // namespace

CreateDatabaseResult createDatabase(const QString& home) {
    if (!QDir().mkpath(home)) {
        throw DatabaseError(QStringLiteral("Could not create the folder '%1'.")
                                .arg(QDir::toNativeSeparators(home)));
    }
    CreateDatabaseResult result;
    const struct {
        const char* name;
        void (*fill)(Connection&);
    } files[] = {{"svdata.mdb", fillSvdata}, {"sccfg.mdb", fillSccfg}};
    for (const auto& file : files) {
        const QString target = QDir(home).filePath(QLatin1String(file.name));
        const QString shown = QDir::toNativeSeparators(target);
        if (QFileInfo::exists(target)) {
            result.leftAlone << shown;
            continue;
        }
        if (buildFile(home, target, file.fill)) {
            result.created << shown;
        } else {
            result.leftAlone << shown;
        }
    }
    return result;
}

} // namespace stellwyn::core
