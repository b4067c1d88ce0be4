#pragma once

#include "core/store/Connection.h"

#include <QByteArrayView>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace stellwyn::core {

// One kept reading. Reading is null where a row was kept for a scale with no reading yet;
// Group and TagID are null except on rows read from an SD card. Date is "yyyy-MM-dd", Time
// "HH:mm:ss".
struct DataColRow {
    qint64 id = 0;
    QString scaleId;
    QVariant reading;
    QString date;
    QString time;
    QVariant group;
    QVariant tagId;
};

// The grid's orders. storeOrder is the first query's, with no order clause: rows as stored.
// Every order ends on ID so that rows equal in the named fields keep their order of arrival.
enum class DataColOrder { storeOrder, byId, byDateTime, byScaleId, byReading };

// Stores a reading stamped with the given moment; returns its ID. No reading leaves the field
// null, as "Save All" does for a scale that has none.
qint64 insertReading(Connection& connection, const QString& scaleId,
                     const std::optional<QString>& reading, const QDateTime& at);

// Where a data file takes a reading: datacol, or the outbox of a station whose readings go to a
// server (Outbox.h). Both go the same fast way.
enum class ReadingTable { datacol, outbox };
qint64 insertReadingInto(Connection& local, ReadingTable table, const QString& scaleId,
                         const std::optional<QString>& reading, const QDateTime& at);

// A record of the SD card's log, as its reader hands it over: the card's text, one byte a
// character, viewed in the reader's buffers until the next record. A null view is a field the
// record does not set, stored as null.
struct ImportedReading {
    QByteArrayView scaleId;
    QByteArrayView group;
    QByteArrayView reading;
    QByteArrayView date; // month/day/year
    QByteArrayView time; // hour:minute:second, the hour possibly shifted below zero
    QByteArrayView tagId;
};

class DataColInsert;

// Stores a card's records one by one inside one transaction, so that a long file needs neither
// a transaction per row nor all its rows in memory. A record whose date or time the store cannot
// take throws a DatabaseError that names it; the records added before it are kept by commit(),
// which the importer calls also when it stops early. Uncommitted, the records are dropped.
class ReadingImport {
public:
    // expectedRows: about how many records will come, or 0 if not known; the store may prepare
    // differently for a long import. A station whose readings go to a server imports into its
    // outbox, which sends them on as it does every reading.
    explicit ReadingImport(Connection& connection, qint64 expectedRows = 0,
                           ReadingTable table = ReadingTable::datacol);
    ~ReadingImport();
    ReadingImport(const ReadingImport&) = delete;
    ReadingImport& operator=(const ReadingImport&) = delete;
    void add(const ImportedReading& record);
    void commit();
    int stored() const { return stored_; }

private:
    Connection& connection_;
    Transaction transaction_;
    std::unique_ptr<DataColInsert> insert_;
    // The order indexes were left out while the rows go in.
    bool dropped_ = false;
    // The fields that hold letters beyond ASCII, turned into the store's encoding.
    std::string scratch_[6];
    int stored_ = 0;
};

// "Clear List". The ID counter runs on past the deleted rows.
void deleteAllReadings(Connection& connection);
qint64 countReadings(Connection& connection);
// The rows stamped with this day.
qint64 countReadingsOn(Connection& connection, const QDate& day);
QList<DataColRow> readings(Connection& connection, DataColOrder order);
// Hands each row in the order to `row`, one at a time, holding no more than the one row: for
// tables too long to hold. `row` returns false to stop.
void forEachReading(Connection& connection, DataColOrder order,
                    const std::function<bool(const DataColRow&)>& row);

// A page of rows in the order: `limit` rows from `offset`, counted from the first row, or from
// the last when fromEnd (the rows still come in the order). For a jump into the table.
QList<DataColRow> readingsAt(Connection& connection, DataColOrder order, qint64 offset, int limit,
                             bool fromEnd);
// Up to `limit` rows that follow (or precede) the key row in the order, found through the
// order's index, however deep into the table. Nothing when the key holds a null.
std::optional<QList<DataColRow>> readingsBeside(Connection& connection, DataColOrder order,
                                                const DataColRow& key, int limit, bool after);
// Readies the readings file for the screen: its write-ahead log, and the indexes behind the
// grid's orders (built on a thread of their own if the table is long). Both are kept by the
// file; a second call finds them made.
void prepareReadingStore(Connection& connection);

} // namespace stellwyn::core
