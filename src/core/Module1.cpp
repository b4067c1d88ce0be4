#include "Module1.h"

namespace stellwyn::core {

QString trimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ') {
        ++first;
    }
    while (last > first && text.at(last - 1) == u' ') {
        --last;
    }
    return text.mid(first, last - first);
}

void Module1::parse_spaces(QString& line) {
    splitLine(line, u' ');
}

// The tab splitter is the blank splitter with one comparison changed: after a separator it still
// skips blanks, not tabs. So two tabs in a row give an empty field and blanks after a tab vanish.
// Indicator replies depend on exactly this field numbering.
void Module1::parse_tabs(QString& line) {
    splitLine(line, u'\t');
}

void Module1::splitLine(QString& line, QChar separator) {
    tokencount = 0;
    // Only the first fifty entries are cleared: anything a longer line left above them stays.
    for (int i = 0; i <= 49; ++i) {
        tokens[i].clear();
    }
    line = trimBlanks(line);
    if (line.isEmpty()) {
        return;
    }
    QString accumulator;
    const qsizetype length = line.size();
    for (qsizetype i = 0; i < length; ++i) {
        const QChar c = line.at(i);
        accumulator += c;
        if (c != u' ' && i == length - 1) {
            tokens[tokencount] = accumulator;
            ++tokencount;
            return;
        }
        if (c == separator) {
            accumulator.chop(1);
            ++tokencount;
            while (i + 1 < length && line.at(i + 1) == u' ') {
                ++i;
            }
            tokens[tokencount - 1] = trimBlanks(accumulator);
            accumulator.clear();
        }
    }
}

void Module1::clearscales() {
    // Entry 10 is left as it is: the table has always been cleared up to 9.
    for (int i = 0; i <= 9; ++i) {
        usbdevindex[i] = 0;
        netid[i] = 0;
        scalemark[i] = 0;
        scalelogging[i] = 0;
        scaleactive[i] = 0;
        scalepolltime[i] = 0;
        scaleid[i] = 0;
        scaledesc[i].clear();
        scaleserial[i].clear();
        scaleweight[i].clear();
        scalelast[i].clear();
    }
    curscale = 0;
    curnetid = 0;
    scalecount = 0;
}

} // namespace stellwyn::core
