#pragma once

#include <QByteArray>
#include <QString>

// The line protocol between a running program and the programs that drive it. A client sends
// execute strings, one a line (LF, a CR before it is dropped); each line is answered at once
// with "ok" (taken, queued) or "refused" (too long or not UTF-8, nothing done). A line that
// starts with "wait " asks for the rest to be run as an execute string and for its end: after
// the "ok" come one "message <text>" line for each box the command raised, then "end".
namespace stellwyn::indicator_config::protocol {

// The longest line taken, its LF not counted.
inline constexpr qsizetype maxLineBytes = 4096;

inline constexpr QByteArrayView waitPrefix = "wait ";
inline constexpr QByteArrayView ok = "ok";
inline constexpr QByteArrayView refused = "refused";
inline constexpr QByteArrayView messagePrefix = "message ";
inline constexpr QByteArrayView end = "end";

// $XDG_RUNTIME_DIR/stellwyn, or, where the session has no runtime folder, stellwyn-<uid> in
// the temporary folder. Only its owner may enter it.
QString socketFolder();

// The socket of the instance that runs on this application home: one a home, named by a hash
// of the home's canonical path, so that the client finds it from the same --home.
QString socketPath(const QString& homeFolder);

} // namespace stellwyn::indicator_config::protocol
