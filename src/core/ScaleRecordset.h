#pragma once

#include "store/ScaleCfgTable.h"

#include <QList>
#include <QString>

namespace stellwyn::core {

// The Setup screen's data control over ScaleCFG: the rows of one link type in NetID order, a
// current position, and the recordset moves the screen makes. Each operation opens the data
// file for itself; the rows read by the last Refresh are what the screen walks, as a data
// control's recordset is, until it is refreshed again.
class ScaleRecordset {
public:
    QString ConnectionString;
    ScaleTypeFilter filter = ScaleTypeFilter::notRs232;

    // Re-runs the query and stands on the first row (past the end when there is none).
    void Refresh();

    int RecordCount() const { return static_cast<int>(rows_.size()); }
    // EOF and BOF of a recordset; the C library owns those two names as macros.
    bool bof() const { return pos_ < 0; }
    bool eof() const { return pos_ >= RecordCount(); }
    // The current row; null before the first or after the last.
    const ScaleCfgRow* current() const;

    // On an empty set the moves leave the position where it is: there is no row to go to.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    // Searches forward from the current row; past the end when no row has the ID.
    void FindId(qint64 id);

    // Adds a row and returns its ID. The shown rows change only at the next Refresh.
    qint64 AddNew(const NewScaleCfg& row);
    // Writes the fields of the current row; nothing when there is none. A number that will
    // not convert is a DatabaseError and nothing is written.
    void Update(const ScaleSetupFields& fields);
    // Removes the current row from the table and from the shown rows; the position then names
    // the row that followed it.
    void Delete();

private:
    QList<ScaleCfgRow> rows_;
    int pos_ = 0;
};

} // namespace stellwyn::core
