#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace stellwyn::core {
class Module1;
}

namespace stellwyn::acquisition {

// The pieces of reading a reply that every scanner shares.

// Appends a chunk to a receive text as 8-bit characters. CR and LF standing in front of a reply
// are the tail of the previous one, whose LF can come after the scanner has already acted on
// its CR; they are dropped so the next reply keeps its address byte (or, on RS-232, its text).
// The receive text keeps its newest core::kInputCap characters; `cut` tells whether anything
// was dropped. Returns the chunk as it was kept.
QByteArray appendReply(QString& received, QByteArray chunk, bool& cut);

// The text up to its first CR, then up to its first LF.
QString cutAtLineEnd(const QString& text);

// The last six characters, where the weight stands, without the blanks that pad it.
QString lastSix(const QString& text);

// A reply split into its address byte and the text behind it.
struct AddressedReply {
    int address = 0;
    QString text;
};

// The address test: a reply whose first character is below 128 is no reading. The upper bound
// of 256 lets every byte through; it is kept because the further cells of a print are told
// with a stricter test, and the two must stay apart.
std::optional<AddressedReply> splitAddress(const QString& line);

// The first table entry whose netid is the address, or -1.
int findScale(const core::Module1& m, int address);

// A cell behind the first one in a print burst.
struct FurtherCell {
    int address = 0;
    QString text;
};

// The further cells of the last chunk read, at every 11 bytes after the first: as many as carry
// an address from 129 to 255, taken in order from the second cell on. A cell that fails the test
// is counted out but not skipped, so the cells after it move up one place.
QList<FurtherCell> furtherCells(const QByteArray& lastChunk);

} // namespace stellwyn::acquisition
