#pragma once

#include "core/store/ScaleCfgTable.h"

#include <optional>

namespace stellwyn::core {
struct DataControl;
}

namespace stellwyn::display {

// data1: the rows of ScaleCFG as the main screen's data control holds them, with its one
// cursor. Every search in the program starts from the first row, so a search runs over the
// table as it stands in the store; the cursor then stands on the row found, or past the end.
class Data1Recordset {
public:
    explicit Data1Recordset(core::DataControl& control);

    // Re-runs the query; bound views follow.
    void Refresh();
    int RecordCount() const { return recordCount_; }

    // On an empty table both are the store's error, as moving in an empty recordset always was.
    void MoveFirst();
    void MoveLast();
    bool FindSerialNo(const QString& serialNo);
    bool FindNetId(qint64 netId);
    bool FindId(qint64 id);
    // EOF of the recordset (the C library owns that name).
    bool isEOF() const { return !row_; }
    // The row under the cursor; past the end it is the store's error.
    const core::ScaleCfgRow& row() const;

private:
    bool land(std::optional<core::ScaleCfgRow> row);
    QList<core::ScaleCfgRow> rows() const;

    core::DataControl& control_;
    int recordCount_ = 0;
    std::optional<core::ScaleCfgRow> row_;
};

} // namespace stellwyn::display
