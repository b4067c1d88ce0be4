#include "Conversions.h"

#include "FatalError.h"
#include "Module1.h"

#include <QLocale>
#include <cmath>
#include <limits>

namespace stellwyn::core {

namespace {

[[noreturn]] void nullFailure(const QString& field) {
    throw FatalError(QStringLiteral("Invalid use of Null (field %1)").arg(field));
}

[[noreturn]] void mismatch(const QVariant& value, const QString& field) {
    throw FatalError(QStringLiteral("Type mismatch: \"%1\" in field %2 is not a number")
                         .arg(value.toString(), field));
}

double numberOf(const QVariant& value, const QString& field) {
    if (value.isNull()) {
        nullFailure(field);
    }
    if (value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray) {
        double out = 0;
        if (!parseNumber(value.toString(), out)) {
            mismatch(value, field);
        }
        return out;
    }
    bool ok = false;
    const double out = value.toDouble(&ok);
    if (!ok) {
        mismatch(value, field);
    }
    return out;
}

template <typename Int> Int roundedInteger(const QVariant& value, const QString& field) {
    // Whole-number conversion rounds half to even, as stored numbers always were.
    const double number = std::nearbyint(numberOf(value, field));
    if (number < static_cast<double>(std::numeric_limits<Int>::min()) ||
        number > static_cast<double>(std::numeric_limits<Int>::max())) {
        throw FatalError(QStringLiteral("Overflow: %1 in field %2 is out of range")
                             .arg(value.toString(), field));
    }
    return static_cast<Int>(number);
}

} // namespace

bool parseNumber(const QString& text, double& out) {
    const QString trimmed = trimBlanks(text);
    if (trimmed.isEmpty()) {
        return false;
    }
    bool ok = false;
    out = QLocale::c().toDouble(trimmed, &ok);
    return ok && std::isfinite(out);
}

std::int16_t toInt16(const QVariant& value, const QString& field) {
    return roundedInteger<std::int16_t>(value, field);
}

std::int32_t toInt32(const QVariant& value, const QString& field) {
    return roundedInteger<std::int32_t>(value, field);
}

double toDouble(const QVariant& value, const QString& field) {
    return numberOf(value, field);
}

QString toText(const QVariant& value, const QString& field) {
    if (value.isNull()) {
        nullFailure(field);
    }
    if (value.typeId() == QMetaType::Double) {
        return QLocale::c().toString(value.toDouble(), 'g', 15);
    }
    return value.toString();
}

std::int16_t toBool16(const QVariant& value, const QString& field) {
    return numberOf(value, field) != 0.0 ? vbTrue : vbFalse;
}

} // namespace stellwyn::core
