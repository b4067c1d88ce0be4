#pragma once

#include <QByteArray>
#include <QStringList>

namespace stellwyn::sim {

class Indicator;

// The texts an indicator sends. `address` is the NetID byte put in front on addressed links,
// or -1 on RS-232, which has none.
namespace replies {

inline constexpr char kLineEnd[] = "\r\n";

// The reading: on RS-232 a text line; on addressed links the 11-byte cell of address, print
// mark, status byte, six-character weight and line end. A broken tag opens with "!" and never
// reaches its "#".
QByteArray reading(const Indicator& indicator, int address, double t, bool print, bool brokenTag);
// A print as the scale pushes it by itself on RS-232: the group line, or the tagged line.
QByteArray printLine(const Indicator& indicator, double t);
// A cell marked "+", the form in which every indicator of a print burst answers.
QByteArray plusCell(const Indicator& indicator, double t);
// Tab-separated words, as the answers to "G", "J" and "T".
QByteArray words(const QStringList& words, int address);

} // namespace replies
} // namespace stellwyn::sim
