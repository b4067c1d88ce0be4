#include "ReplyMarkers.h"

#include "ReplyText.h"
#include "Scanners.h"
#include "core/Module1.h"

namespace stellwyn::acquisition {

namespace {

// The tag runs from behind "!" for as many characters as "#" stands from the text's second
// one, which is exactly the words in between when the text opens with "!". Nothing is returned
// when that length is negative (no "#", or "#" first) or no word is left in it.
std::optional<QString> readTag(core::Module1& m, const QString& text) {
    const qsizetype bang = text.indexOf(u'!');
    const qsizetype hash = text.indexOf(u'#');
    const qsizetype length = hash - 1;
    if (length < 0) {
        return std::nullopt;
    }
    QString tag = text.mid(bang + 1, length);
    m.parse_spaces(tag);
    if (m.tokencount < 1) {
        return std::nullopt;
    }
    const QString& word = m.tokens[m.tokencount - 1];
    return m.tagblz != 0 ? Scanners::blz(word) : word;
}

} // namespace

std::optional<MarkedText> readMarkers(core::Module1& m, QString text, bool printflag) {
    MarkedText marked;
    if (text.contains(u'!')) {
        std::optional<QString> tag = readTag(m, text);
        if (!tag) {
            return std::nullopt;
        }
        marked.tag = *tag;
    }
    marked.printflag = printflag;
    if (const qsizetype hash = text.indexOf(u'#'); hash >= 0) {
        marked.groupflag = 1;
        marked.group = text.mid(hash + 1, 1);
        text = text.mid(hash + 2);
        marked.groupText = text;
    }
    if (const qsizetype d = text.indexOf(u'D'); d >= 0) {
        text.truncate(d);
        marked.printflag = true;
    }
    marked.text = cutAtLineEnd(text);
    return marked;
}

} // namespace stellwyn::acquisition
