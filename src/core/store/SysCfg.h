#pragma once

#include "core/store/Connection.h"

#include <QString>
#include <QVariant>
#include <array>
#include <optional>

namespace stellwyn::core {

// Slaves 0 to 8 keep a layout; slave 9 has none, and that is how it stays.
inline constexpr int kSavedSlaves = 9;

// The first row of syscfg as stored: nulls and texts kept, so that the reader applies the
// defaults and conversions of its own settings (and fails where they say it fails).
struct SysCfgRecord {
    QVariant commtype;
    QVariant commport;
    QVariant rfnet;
    QVariant smallfonts;
    QVariant rfnetid;
    QVariant tagblz;
    QVariant netpolltime;
    QVariant netdeltime;
    QVariant datacolenbstart;
    QVariant usbreset;
    std::array<QVariant, kSavedSlaves> slaveEnb;
    std::array<QVariant, kSavedSlaves> slaveLeft;
    std::array<QVariant, kSavedSlaves> slaveTop;
};

// Which fields a reader fills; the others stay null.
enum class SysCfgPart {
    Everything,
    // What loadsettings loads: not usbreset, not the slave layout.
    LoadedSettings,
    // The slave windows' columns alone.
    SlaveLayout,
};

// Empty when syscfg has no row. A missing table or field is a DatabaseError.
std::optional<SysCfgRecord> readSysCfg(Connection& connection,
                                       SysCfgPart part = SysCfgPart::Everything);
// Opens its own connection for the one read, as the settings load does; here a missing row is
// a DatabaseError too.
SysCfgRecord readSysCfg(const QString& connText, SysCfgPart part = SysCfgPart::Everything);

// What the Setup screen saves, as its controls hold it. commport and the three numbers are
// the boxes' texts: the columns take numbers, and a text that is none is kept as text, so that
// the settings reader fails on it just as it would have.
struct SysCfgSettings {
    QString commtype;
    QString commport;
    QString netpolltime;
    QString netdeltime;
    QString usbreset;
    bool rfnet = false;
    bool smallfonts = false;
    bool datacolenbstart = false;
    int rfnetid = 0;
};

// Writes the first row. Returns false, writing nothing, when syscfg has no row.
bool writeSysCfg(Connection& connection, const SysCfgSettings& settings);

// One slave's part of a saved layout: a closed window stores "not enabled" and keeps its
// old position; an open one stores enabled with its place (twips).
struct SlavePlace {
    bool open = false;
    int left = 0;
    int top = 0;
};

// Writes slaves 0 to 8 into the first row in one step. No row is a DatabaseError.
void writeSlaveLayout(Connection& connection, const std::array<SlavePlace, kSavedSlaves>& places);

} // namespace stellwyn::core
