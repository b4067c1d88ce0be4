#pragma once

#include <QString>
#include <optional>

namespace stellwyn::core {

// cfg.txt holds one line: the data folder. It is read back as one comma-delimited field, so a
// folder whose name holds a comma is cut there, as it always was.
namespace cfgtxt {

// The most of the first line that is read: a path on this system is at most 4096 bytes.
inline constexpr qint64 kLongestLine = 4096;

// The first field of the file, or nothing when the file cannot be opened. Only the first
// kLongestLine bytes of the line are read.
std::optional<QString> readFirstField(const QString& path);
// Replaces the file by one holding the folder as its one line. On failure the file is as it
// was, the reason is logged, and the result is false.
bool write(const QString& path, const QString& folder);
// The first comma-delimited field of a line: blanks around it dropped, quotes honoured.
QString firstField(const QString& line);

} // namespace cfgtxt
} // namespace stellwyn::core
