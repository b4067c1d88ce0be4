#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace stellwyn::core {
struct Module1;
}

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

// The scale table a start left, one "netid|description|serial|device index|mark" per scale.
QStringList scaleTable(const core::Module1& m);

} // namespace stellwyn::linkstest
