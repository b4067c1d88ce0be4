#include "Data1Recordset.h"

#include "core/Controls.h"
#include "core/store/Connection.h"

namespace stellwyn::display {

namespace {
core::DatabaseError noCurrentRecord() {
    return core::DatabaseError(
        QStringLiteral("Either BOF or EOF is True, or the current record has been deleted. "
                       "Requested operation requires a current record."));
}
} // namespace

Data1Recordset::Data1Recordset(core::DataControl& control) : control_(control) {}

QList<core::ScaleCfgRow> Data1Recordset::rows() const {
    auto connection = core::Connection::open(control_.ConnectionString);
    return core::allScaleCfg(connection);
}

void Data1Recordset::Refresh() {
    const QList<core::ScaleCfgRow> all = rows();
    recordCount_ = static_cast<int>(all.size());
    row_ = all.isEmpty() ? std::nullopt : std::optional(all.first());
    if (control_.Refreshed) {
        control_.Refreshed();
    }
}

void Data1Recordset::MoveFirst() {
    const QList<core::ScaleCfgRow> all = rows();
    if (all.isEmpty()) {
        throw noCurrentRecord();
    }
    row_ = all.first();
}

void Data1Recordset::MoveLast() {
    const QList<core::ScaleCfgRow> all = rows();
    if (all.isEmpty()) {
        throw noCurrentRecord();
    }
    row_ = all.last();
}

bool Data1Recordset::land(std::optional<core::ScaleCfgRow> row) {
    row_ = std::move(row);
    return row_.has_value();
}

bool Data1Recordset::FindSerialNo(const QString& serialNo) {
    auto connection = core::Connection::open(control_.ConnectionString);
    return land(core::findScaleCfgBySerialNo(connection, serialNo));
}

bool Data1Recordset::FindNetId(qint64 netId) {
    auto connection = core::Connection::open(control_.ConnectionString);
    return land(core::findScaleCfgByNetId(connection, netId));
}

bool Data1Recordset::FindId(qint64 id) {
    auto connection = core::Connection::open(control_.ConnectionString);
    return land(core::findScaleCfgById(connection, id));
}

const core::ScaleCfgRow& Data1Recordset::row() const {
    if (!row_) {
        throw noCurrentRecord();
    }
    return *row_;
}

} // namespace stellwyn::display
