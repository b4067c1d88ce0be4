#include "links/ScaleEntry.h"

#include "core/FatalError.h"
#include "core/Module1.h"

#include <cmath>
#include <limits>

namespace stellwyn::links {

QString unknownSerial() {
    return QStringLiteral("Unknown");
}

std::int32_t netIdOf(const QVariant& field) {
    if (field.isNull()) {
        throw core::FatalError(QStringLiteral("Invalid use of Null (a NetID field is empty)"));
    }
    bool ok = false;
    const double value = field.toDouble(&ok);
    if (!ok) {
        throw core::FatalError(
            QStringLiteral("Type mismatch (NetID \"%1\")").arg(field.toString()));
    }
    const double rounded = std::nearbyint(value);
    if (rounded < std::numeric_limits<std::int32_t>::min() ||
        rounded > std::numeric_limits<std::int32_t>::max()) {
        throw core::FatalError(QStringLiteral("Overflow (NetID %1)").arg(value));
    }
    return static_cast<std::int32_t>(rounded);
}

void fillNetworkEntry(core::Module1& m, int i, std::int32_t netId, const QString& descPrefix) {
    m.usbdevindex[i] = 0;
    m.scalemark[i] = kLinkScaleMark;
    m.netid[i] = netId;
    m.scaleserial[i] = unknownSerial();
    m.scaledesc[i] = descPrefix + QString::number(netId);
}

} // namespace stellwyn::links
