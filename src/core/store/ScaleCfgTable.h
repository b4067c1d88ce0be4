#pragma once

#include "core/store/Connection.h"

#include <QList>
#include <QString>
#include <QVariant>
#include <optional>

namespace stellwyn::core {

// One row of ScaleCFG. The number fields stay as stored, null included: rows made at link
// start-up have no NetID, rows made by Setup no polltime or baud.
struct ScaleCfgRow {
    qint64 id = 0;
    QString sctype;
    QVariant netId;
    QString serialNo;
    QString description;
    bool active = false;
    QVariant polltime;
    QVariant baud;
    QVariant pollTime;
    bool pollActive = false;
};

// A row to add. Number fields take a number or the text a screen holds; null leaves the field
// unset.
struct NewScaleCfg {
    QString sctype;
    QString description;
    QString serialNo;
    QVariant netId;
    bool active = false;
    QVariant polltime;
    QVariant baud;
};

// The row a link start-up adds for a scale it has no row for.
NewScaleCfg linkDefaultScaleCfg(const QString& commtype, const QString& description,
                                const QString& serialNo);
// The row Setup adds ("Add Scale", and the first row of an empty table with NetID 130).
NewScaleCfg setupNewScaleCfg(const QVariant& netId, bool active);

// The fields the Setup screen edits. netId and pollTime as the boxes hold them.
struct ScaleSetupFields {
    QString sctype;
    QVariant netId;
    QString description;
    bool active = false;
    QVariant pollTime;
    bool pollActive = false;
};

// Every row, in ID order (the order of "select * from scalecfg").
QList<ScaleCfgRow> allScaleCfg(Connection& connection);
// The scale list of a network link: sctype RS485 and active, in NetID order.
QList<ScaleCfgRow> activeRs485ScaleCfg(Connection& connection);
// The rows the Setup screen shows, and the rows the log timers walk: in NetID order.
enum class ScaleTypeFilter { rs232Only, notRs232 };
QList<ScaleCfgRow> scaleCfgByType(Connection& connection, ScaleTypeFilter filter);

// The first row, in ID order, that holds the key.
std::optional<ScaleCfgRow> findScaleCfgById(Connection& connection, qint64 id);
std::optional<ScaleCfgRow> findScaleCfgByNetId(Connection& connection, qint64 netId);
// Serial numbers compare without regard to case, as the search always did. One that holds an
// apostrophe never worked as a search (it broke the criteria); it is a DatabaseError that
// says so rather than a match on some other row.
std::optional<ScaleCfgRow> findScaleCfgBySerialNo(Connection& connection, const QString& serialNo);

// Returns the new row's ID. A number field that will not convert is a DatabaseError and
// nothing is added.
qint64 insertScaleCfg(Connection& connection, const NewScaleCfg& row);
// Returns false when no row has that ID. Conversions are checked before anything is written.
bool updateScaleSetupFields(Connection& connection, qint64 id, const ScaleSetupFields& fields);
bool deleteScaleCfg(Connection& connection, qint64 id);

} // namespace stellwyn::core
