#include "LoadSettings.h"

#include "Conversions.h"
#include "FatalError.h"
#include "Module1.h"
#include "store/SysCfg.h"

namespace stellwyn::core {

namespace {

// Null or the empty text takes the default; anything else must be a number.
double numberOrDefault(const QVariant& value, const QString& field, const QString& fallback) {
    if (value.isNull() || value.toString().isEmpty()) {
        return toDouble(fallback, field);
    }
    return toDouble(value, field);
}

} // namespace

void loadsettings(Module1& m) {
    const SysCfgRecord row = readSysCfg(m.cfgconn, SysCfgPart::LoadedSettings);
    m.commtype = toText(row.commtype, QStringLiteral("commtype"));
    m.commsettings = serialLineSettings();
    m.commport = toInt16(row.commport, QStringLiteral("commport"));
    m.rfnet = toInt16(row.rfnet, QStringLiteral("rfnet"));
    m.smallfonts = toInt16(row.smallfonts, QStringLiteral("smallfonts"));
    m.rfnetid = toText(row.rfnetid, QStringLiteral("rfnetid"));
    m.tagblz = toInt16(row.tagblz, QStringLiteral("tagblz"));
    m.netpolltime =
        numberOrDefault(row.netpolltime, QStringLiteral("netpolltime"), QStringLiteral(".33"));
    m.netdeltime =
        numberOrDefault(row.netdeltime, QStringLiteral("netdeltime"), QStringLiteral(".01"));
    m.datacolenbstart = toBool16(row.datacolenbstart, QStringLiteral("datacolenbstart"));
}

} // namespace stellwyn::core
