#pragma once

#include <QList>
#include <QVariant>
#include <optional>

namespace stellwyn::core {
class Connection;
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::links {

// The NetID fields of the active RS485 rows, in NetID order: the scale list of a network
// link. A row whose NetID is no byte (below 0 or above 255) is told of and left out. Nothing,
// after telling the user, when no row is left or a row holds NetID 0; a start must then stop
// before it touches its port.
std::optional<QList<QVariant>> networkScaleNetIds(core::Connection& connection,
                                                  core::Dialogs& dialogs);

// The table part of the "USB485" start, which the Ethernet starts share as it stands: clears
// the scale tables and fills one entry for each scale of the list, "SCALE RS485 ID#" and its
// NetID. Yields before and after; an empty or refused list leaves the table empty.
void fillNetworkTable(core::Module1& m, core::Dialogs& dialogs);

} // namespace stellwyn::links
