#pragma once

#include <QByteArray>
#include <QString>

namespace stellwyn::links {

// The links carry single bytes, while the rest of the program holds wire text in strings, one
// character per byte. These two go between them by character code, 0 to 255, with no text
// encoding in the way: a NetID of 130 must leave as the one byte 0x82.
QByteArray bytesOf(const QString& text);
QString textOf(const QByteArray& bytes);

// The text in front of the first NUL of a C string buffer.
QByteArray untilNul(const QByteArray& buffer);

} // namespace stellwyn::links
