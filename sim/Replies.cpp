#include "Replies.h"

#include "Indicator.h"

namespace stellwyn::sim::replies {

namespace {

constexpr char kNoPrint = ' ';
constexpr char kPrintMark = '+';

// Byte 2 of the cell: what the host does not interpret, the scale uses for motion.
char statusByte(const Indicator& indicator, double t) {
    return indicator.weight().movingAt(t) ? 'M' : ' ';
}

QByteArray withAddress(int address, const QByteArray& text) {
    QByteArray out;
    if (address >= 0) {
        out.append(static_cast<char>(address));
    }
    out.append(text);
    return out;
}

// "!" tag words (when there is a tag), then "#" and the group.
QByteArray taggedGroup(const Indicator& indicator) {
    QByteArray out;
    if (!indicator.tag().isEmpty()) {
        out += '!' + indicator.tag();
    }
    return out + '#' + indicator.group();
}

QByteArray tagWords(const Indicator& indicator) {
    return indicator.tag().isEmpty() ? QByteArrayLiteral("TAG") : indicator.tag();
}

} // namespace

QByteArray reading(const Indicator& indicator, int address, double t, bool print, bool brokenTag) {
    const QByteArray weight = indicator.weight().textAt(t);
    QByteArray text;
    if (brokenTag) {
        text = '!' + tagWords(indicator) + ' ' + weight;
    } else if (print && indicator.printStyle() == PrintStyle::D) {
        text = address < 0 ? weight + 'D'
                           : QByteArray(1, kNoPrint) + statusByte(indicator, t) + weight + 'D';
    } else if (print && (indicator.printStyle() == PrintStyle::Hash || address < 0 ||
                         !indicator.tag().isEmpty())) {
        text = taggedGroup(indicator) + weight;
    } else if (address < 0) {
        text = weight;
    } else {
        text = QByteArray(1, print ? kPrintMark : kNoPrint) + statusByte(indicator, t) + weight;
    }
    return withAddress(address, text + kLineEnd);
}

QByteArray printLine(const Indicator& indicator, double t) {
    return reading(indicator, -1, t, true, false);
}

QByteArray plusCell(const Indicator& indicator, double t) {
    return withAddress(indicator.netId(), QByteArray(1, kPrintMark) + statusByte(indicator, t) +
                                              indicator.weight().textAt(t) + kLineEnd);
}

QByteArray words(const QStringList& list, int address) {
    return withAddress(address, list.join(QLatin1Char('\t')).toLatin1() + kLineEnd);
}

} // namespace stellwyn::sim::replies
