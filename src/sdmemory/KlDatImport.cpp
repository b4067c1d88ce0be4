#include "KlDatImport.h"

#include "core/Module1.h"
#include "core/WholeFile.h"
#include "core/store/Connection.h"

#include <QFile>
#include <cstring>
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
    qsizetype end = 0;
    if (end < compact.size() && (compact.at(end) == u'+' || compact.at(end) == u'-')) {
        ++end;
    }
    bool digits = false;
    bool point = false;
    for (; end < compact.size(); ++end) {
        const QChar c = compact.at(end);
        if (c.isDigit()) {
            digits = true;
        } else if (c == u'.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    return digits ? compact.left(end).toDouble() : 0.0;
}

// One line of the file and whether it could be kept.
struct RawLine {
    QByteArray bytes;
    bool tooLong = false;
};

// Hands out the file's lines, each ended by CR, LF or CR LF, reading the file in large blocks.
// A line longer than the bound is read past, not kept.
class LineReader {
public:
    explicit LineReader(QFile& file) : file_(file) {}

    bool next(RawLine& line) {
        line.bytes.clear();
        line.tooLong = false;
        bool any = false;
        for (;;) {
            if (at_ == buffer_.size() && !fill()) {
                return any;
            }
            any = true;
            const char* begin = buffer_.constData() + at_;
            const auto available = static_cast<std::size_t>(buffer_.size() - at_);
            const char* end = static_cast<const char*>(std::memchr(begin, '\n', available));
            const char* cr = static_cast<const char*>(std::memchr(begin, '\r', available));
            if (cr != nullptr && (end == nullptr || cr < end)) {
                end = cr;
            }
            const qsizetype length =
                (end == nullptr ? buffer_.constData() + buffer_.size() : end) - begin;
            keep(line, begin, length);
            at_ += length;
            if (end == nullptr) {
                continue;
            }
            ++at_;
            if (*end == '\r') {
                if (at_ < buffer_.size()) {
                    at_ += buffer_.at(at_) == '\n' ? 1 : 0;
                } else {
                    skipLf_ = true;
                }
            }
            return true;
        }
    }
    qint64 position() const { return file_.pos() - (buffer_.size() - at_); }

private:
    bool fill() {
        buffer_ = file_.read(1 << 20);
        at_ = 0;
        if (skipLf_ && !buffer_.isEmpty()) {
            skipLf_ = false;
            if (buffer_.at(0) == '\n') {
                at_ = 1;
            }
        }
        return at_ < buffer_.size();
    }
    void keep(RawLine& line, const char* bytes, qsizetype length) {
        const qsizetype room = maxLineBytes - line.bytes.size();
        if (length > room) {
            line.tooLong = true;
            length = room;
        }
        line.bytes.append(bytes, length);
    }

    QFile& file_;
    QByteArray buffer_;
    qsizetype at_ = 0;
    // A CR ended the last line; an LF straight after it belongs to that line end.
    bool skipLf_ = false;
};

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
    QString hour = hourText;
    if (offset != 0) {
        const double value = leadingNumber(hourText) - offset;
        const auto whole = static_cast<long long>(value);
        hour = static_cast<double>(whole) == value ? QString::number(whole)
                                                   : QString::number(value, 'g', 15);
    }
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
        LineReader lines(file);
        RawLine raw;
        const RawLine* line = &raw;
        try {
            while (lines.next(raw)) {
                if (progress && ++sinceReport == progressEvery) {
                    sinceReport = 0;
                    if (!progress(lines.position(), total)) {
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
    // Replaced whole: a card that fills or is pulled on the way keeps its readings.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        !core::writeWhole(file, " \r\n") || !core::commitWhole(file)) {
        if (error != nullptr) {
            *error = file.errorString();
        }
        return false;
    }
    return true;
}

} // namespace stellwyn::sdmemory
