#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>

namespace stellwyn::core {

// Conversions of stored values into the shared variables' types. A value that will not
// convert is the fatal error; the text names the field so the operator knows what to mend.
std::int16_t toInt16(const QVariant& value, const QString& field);
std::int32_t toInt32(const QVariant& value, const QString& field);
double toDouble(const QVariant& value, const QString& field);
QString toText(const QVariant& value, const QString& field);
// A yes/no value: any non-zero number is true (-1), zero is false (0).
std::int16_t toBool16(const QVariant& value, const QString& field);

// A number written as text with a point as the decimal separator, such as ".33".
bool parseNumber(const QString& text, double& out);

} // namespace stellwyn::core
