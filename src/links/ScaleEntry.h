#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>

namespace stellwyn::core {
class Module1;
}

namespace stellwyn::links {

// The mark every link start puts on the entries it fills.
inline constexpr std::int16_t kLinkScaleMark = 12345;

// The serial number of a scale that has no USB device of its own.
QString unknownSerial();

// A NetID field as the scale table holds it. An empty field cannot be held and is the fatal
// error; a fraction rounds as an assignment to a whole number always has.
std::int32_t netIdOf(const QVariant& field);

// Fills table entry i for a scale on an addressed network.
void fillNetworkEntry(core::Module1& m, int i, std::int32_t netId, const QString& descPrefix);

} // namespace stellwyn::links
