#include "ScaleRecordset.h"

namespace stellwyn::core {

void ScaleRecordset::Refresh() {
    Connection connection = Connection::open(ConnectionString);
    rows_ = scaleCfgByType(connection, filter);
    pos_ = 0;
}

const ScaleCfgRow* ScaleRecordset::current() const {
    return bof() || eof() ? nullptr : &rows_[pos_];
}

void ScaleRecordset::MoveFirst() {
    if (!rows_.isEmpty()) {
        pos_ = 0;
    }
}

void ScaleRecordset::MoveLast() {
    if (!rows_.isEmpty()) {
        pos_ = RecordCount() - 1;
    }
}

void ScaleRecordset::MoveNext() {
    if (!eof()) {
        ++pos_;
    }
}

void ScaleRecordset::MovePrevious() {
    if (!bof()) {
        --pos_;
    }
}

void ScaleRecordset::FindId(qint64 id) {
    if (pos_ < 0) {
        pos_ = 0;
    }
    while (!eof() && rows_[pos_].id != id) {
        ++pos_;
    }
}

qint64 ScaleRecordset::AddNew(const NewScaleCfg& row) {
    Connection connection = Connection::open(ConnectionString);
    return insertScaleCfg(connection, row);
}

void ScaleRecordset::Update(const ScaleSetupFields& fields) {
    if (current() == nullptr) {
        return;
    }
    ScaleCfgRow& row = rows_[pos_];
    Connection connection = Connection::open(ConnectionString);
    updateScaleSetupFields(connection, row.id, fields);
    row.sctype = fields.sctype;
    row.netId = fields.netId;
    row.description = fields.description;
    row.active = fields.active;
    row.pollTime = fields.pollTime;
    row.pollActive = fields.pollActive;
}

void ScaleRecordset::Delete() {
    if (current() == nullptr) {
        return;
    }
    Connection connection = Connection::open(ConnectionString);
    deleteScaleCfg(connection, rows_[pos_].id);
    rows_.removeAt(pos_);
}

} // namespace stellwyn::core
