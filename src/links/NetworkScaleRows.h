#pragma once

#include <QList>
#include <QVariant>
#include <optional>

namespace stellwyn::core {
class Connection;
class Dialogs;
} // namespace stellwyn::core

namespace stellwyn::links {

// The NetID fields of the active RS485 rows, in NetID order: the scale list of a network
// link. A row whose NetID is no byte (below 0 or above 255) is told of and left out. Nothing,
// after telling the user, when no row is left or a row holds NetID 0; a start must then stop
// before it touches its port.
std::optional<QList<QVariant>> networkScaleNetIds(core::Connection& connection,
                                                  core::Dialogs& dialogs);

} // namespace stellwyn::links
