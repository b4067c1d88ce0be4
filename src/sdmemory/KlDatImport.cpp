#include "KlDatImport.h"

#include "core/Module1.h"
#include "core/store/Connection.h"

#include <QFile>
#include <QRegularExpression>
#include <optional>

namespace stellwyn::sdmemory {

namespace {

// Longest line kept in memory; a longer one is read past and counted as bad.
constexpr qsizetype maxLineBytes = 64 * 1024;
// Lines read between two reports of progress.
constexpr int progressEvery = 8192;

// The number at the front of a text, blanks ignored, as the indicator's hour is read: "09"
// is 9, "" and letters are 0.
double leadingNumber(const QString& text) {
    QString compact = text;
    compact.remove(u' ');
    static const QRegularExpression number(QStringLiteral(R"(^[+-]?(\d+(\.\d*)?|\.\d+))"));
    const QRegularExpressionMatch match = number.match(compact);
    return match.hasMatch() ? match.captured(0).toDouble() : 0.0;
}

// One line of the file and whether it could be kept.
struct RawLine {
    QByteArray bytes;
    bool tooLong = false;
};

// Reads to the next CR, LF or CR LF. A line longer than the bound is consumed, not kept.
std::optional<RawLine> nextLine(QFile& file) {
    RawLine line;
    char c = 0;
    bool any = false;
    while (file.getChar(&c)) {
        any = true;
        if (c == '\n') {
            return line;
        }
        if (c == '\r') {
            char next = 0;
            if (file.peek(&next, 1) == 1 && next == '\n') {
                file.getChar(&next);
            }
            return line;
        }
        if (line.bytes.size() < maxLineBytes) {
            line.bytes.append(c);
        } else {
            line.tooLong = true;
        }
    }
    if (!any) {
        return std::nullopt;
    }
    return line;
}

} // namespace

bool isRecordLength(qsizetype length) {
    return length >= 16 && length < 70;
}

QString adjustedTime(const QString& hourText, const QString& rest, const QString& timezone) {
    int offset = 0;
    if (timezone == u"Pacific Standard Time") {
        offset = 3;
    } else if (timezone == u"Mountain Standard Time") {
        offset = 2;
    } else if (timezone == u"Central Standard Time") {
        offset = 1;
    }
    const QString hour =
        offset == 0 ? hourText : QString::number(leadingNumber(hourText) - offset, 'g', 15);
    return hour + u':' + rest;
}

core::ImportedReading KlRecordParser::parse(const QString& line) {
    QString s = core::trimBlanks(line);
    core::ImportedReading record;
    record.scaleId = s.isEmpty() ? QString() : QString::number(s.at(0).unicode());
    s = s.mid(1);

    const qsizetype tag = s.indexOf(u'!');
    if (tag >= 0) {
        const qsizetype hash = s.indexOf(u'#');
        // The tag's length is counted from the start of the text: right when "!" leads it.
        const qsizetype length = hash - 1;
        if (hash < 0 || length < 0) {
            throw KlRecordError("tag without a group mark");
        }
        QString words = s.mid(tag + 1, length);
        m_.parse_spaces(words);
        if (m_.tokencount == 0) {
            throw KlRecordError("tag without a word");
        }
        record.tagId = m_.tokens[m_.tokencount - 1];
    }

    const qsizetype group = s.indexOf(u'#');
    if (group >= 0) {
        record.group = s.mid(group + 1, 1);
        s = s.mid(group + 2);
    }
    const qsizetype percent = s.indexOf(u'%');
    if (percent >= 0) {
        reading_ = s.left(percent);
        s = s.mid(percent + 1);
    }
    for (QChar end : {QChar(u'\r'), QChar(u'\n')}) {
        const qsizetype at = s.indexOf(end);
        if (at >= 0) {
            s.truncate(at);
        }
    }
    const qsizetype at = s.indexOf(u'@');
    if (at >= 0) {
        date_ = s.left(at);
        s = s.mid(at + 1);
    }
    const qsizetype colon = s.indexOf(u':');
    if (colon >= 0) {
        time_ = adjustedTime(s.left(colon), s.mid(colon + 1), timezone_);
    }
    record.reading = reading_;
    record.date = date_;
    record.time = time_;
    return record;
}

KlImportResult importKlDat(const QString& path, core::Module1& m,
                           const KlImportProgress& progress) {
    KlImportResult result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = file.errorString();
        return result;
    }
    const qint64 total = file.size();
    try {
        core::Connection connection = core::Connection::open(m.cfgconn);
        core::ReadingImport import(connection);
        KlRecordParser parser(m, m.sdtimezone);
        int sinceReport = 0;
        try {
            while (std::optional<RawLine> line = nextLine(file)) {
                if (progress && ++sinceReport == progressEvery) {
                    sinceReport = 0;
                    if (!progress(file.pos(), total)) {
                        result.cancelled = true;
                        break;
                    }
                }
                if (line->tooLong || line->bytes.contains('\0')) {
                    ++result.badLines;
                    continue;
                }
                if (!isRecordLength(line->bytes.size())) {
                    continue;
                }
                // One byte, one character: the address keeps its byte value as its code.
                import.add(parser.parse(QString::fromLatin1(line->bytes)));
            }
        } catch (const KlRecordError& e) {
            result.error = QString::fromUtf8(e.what());
        } catch (const core::DatabaseError& e) {
            result.error = e.text();
        }
        import.commit();
        result.stored = import.stored();
    } catch (const core::DatabaseError& e) {
        result.error = e.text();
    }
    return result;
}

bool eraseKlDat(const QString& path, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(" \r\n") != 3 ||
        !file.flush()) {
        if (error != nullptr) {
            *error = file.errorString();
        }
        return false;
    }
    return true;
}

} // namespace stellwyn::sdmemory
