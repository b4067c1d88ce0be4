#pragma once

#include <QList>
#include <QString>
#include <QVariant>

namespace stellwyn::linkstest {

struct ScaleRow {
    QString sctype;
    QVariant netId;
    bool active = true;
};

// A new installation in folder (svdata.mdb and sccfg.mdb) whose ScaleCFG in `file` holds the
// rows in the order given.
void makeScaleCfg(const QString& folder, const QString& file, const QList<ScaleRow>& rows);

// Rows written as "RS485/131 RS485/130- RS232/129 RS485/null": type, NetID, a trailing "-"
// for an inactive row, "null" for an empty NetID.
QList<ScaleRow> scaleRows(const QString& text);

} // namespace stellwyn::linkstest
