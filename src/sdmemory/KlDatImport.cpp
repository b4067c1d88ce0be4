#include "KlDatImport.h"

#include "collection/StoreReading.h"
#include "core/Module1.h"
#include "core/WholeFile.h"
#include "core/store/Connection.h"
#include "core/store/ReadingServer.h"

#include <QFile>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace stellwyn::sdmemory {

namespace {

// Longest line kept in memory; a longer one is read past and counted as bad.
constexpr qsizetype maxLineBytes = 64 * 1024;
// Lines read between two reports of progress.
constexpr int progressEvery = 8192;
// The file is read in blocks of this size.
constexpr qint64 blockBytes = 1 << 20;

QByteArrayView trimmedBlanks(QByteArrayView text) {
    while (!text.isEmpty() && text.front() == ' ') {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && text.back() == ' ') {
        text.chop(1);
    }
    return text;
}

// The number at the front of a text, blanks ignored, as the indicator's hour is read: "09"
// is 9, "" and letters are 0.
double leadingNumber(QByteArrayView text) {
    QByteArray compact;
    for (char c : text) {
        if (c != ' ') {
            compact += c;
        }
    }
    qsizetype end = 0;
    if (end < compact.size() && (compact.at(end) == '+' || compact.at(end) == '-')) {
        ++end;
    }
    bool digits = false;
    bool point = false;
    for (; end < compact.size(); ++end) {
        const char c = compact.at(end);
        if (c >= '0' && c <= '9') {
            digits = true;
        } else if (c == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    return digits ? compact.left(end).toDouble() : 0.0;
}

void append(std::string& to, QByteArrayView bytes) {
    to.append(bytes.data(), static_cast<std::size_t>(bytes.size()));
}

// Sets a carried field, keeping the room it had.
void carry(std::optional<std::string>& field, QByteArrayView value) {
    if (!field) {
        field.emplace();
    }
    field->clear();
    append(*field, value);
}

QByteArrayView viewOf(const std::optional<std::string>& field) {
    return field ? QByteArrayView(field->data(), static_cast<qsizetype>(field->size()))
                 : QByteArrayView();
}

// Hands out the file's lines, each ended by CR, LF or CR LF, reading the file in large blocks. A
// line is a view into the block where it lies whole in one; only a line across two blocks is
// copied. A line longer than the bound is read past, not kept.
class LineReader {
public:
    explicit LineReader(QFile& file) : file_(file) {}

    // The next line without its end, valid until the next call; false at the end of the file.
    bool next(QByteArrayView& line, bool& tooLong) {
        tooLong = false;
        bool carried = false;
        carry_.clear();
        for (;;) {
            if (at_ == buffer_.size() && !fill()) {
                if (!carried) {
                    return false;
                }
                line = carry_;
                return true;
            }
            const char* begin = buffer_.constData() + at_;
            const auto available = static_cast<std::size_t>(buffer_.size() - at_);
            const char* end = static_cast<const char*>(std::memchr(begin, '\n', available));
            const std::size_t before =
                end == nullptr ? available : static_cast<std::size_t>(end - begin);
            if (const auto* cr = static_cast<const char*>(std::memchr(begin, '\r', before))) {
                end = cr;
            }
            const qsizetype length =
                static_cast<qsizetype>(end == nullptr ? available : end - begin);
            at_ += length;
            if (end != nullptr && !carried) {
                tooLong = length > maxLineBytes;
                line = QByteArrayView(begin, std::min(length, maxLineBytes));
            } else {
                carried = true;
                keep(QByteArrayView(begin, length), tooLong);
                line = carry_;
            }
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
        buffer_.resize(blockBytes);
        const qint64 got = file_.read(buffer_.data(), blockBytes);
        buffer_.resize(std::max<qint64>(got, 0));
        at_ = 0;
        if (skipLf_ && !buffer_.isEmpty()) {
            skipLf_ = false;
            if (buffer_.at(0) == '\n') {
                at_ = 1;
            }
        }
        return at_ < buffer_.size();
    }
    void keep(QByteArrayView bytes, bool& tooLong) {
        const qsizetype room = maxLineBytes - static_cast<qsizetype>(carry_.size());
        if (bytes.size() > room) {
            tooLong = true;
            bytes.truncate(room);
        }
        append(carry_, bytes);
    }

    QFile& file_;
    QByteArray buffer_;
    qsizetype at_ = 0;
    std::string carry_;
    // A CR ended the last line; an LF straight after it belongs to that line end.
    bool skipLf_ = false;
};

} // namespace

bool isRecordLength(qsizetype length) {
    return length >= 16 && length < 70;
}

KlRecordParser::KlRecordParser(const QString& timezone) {
    if (timezone == u"Pacific Standard Time") {
        hourOffset_ = 3;
    } else if (timezone == u"Mountain Standard Time") {
        hourOffset_ = 2;
    } else if (timezone == u"Central Standard Time") {
        hourOffset_ = 1;
    }
}

void KlRecordParser::setTime(QByteArrayView hour, QByteArrayView rest) {
    if (!time_) {
        time_.emplace();
    }
    std::string& time = *time_;
    time.clear();
    if (hourOffset_ == 0) {
        append(time, hour);
    } else if (!hour.isEmpty() && hour.size() <= 2 &&
               std::all_of(hour.begin(), hour.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        // The everyday hour: one or two digits. Written back as plain decimal, so "09" less 3
        // is "6", and an hour below the offset goes negative.
        int value = hour.front() - '0';
        if (hour.size() == 2) {
            value = value * 10 + (hour.back() - '0');
        }
        time += std::to_string(value - hourOffset_);
    } else {
        const double value = leadingNumber(hour) - hourOffset_;
        // Whole hours come out as whole numbers; anything else keeps its fraction.
        const bool whole = std::abs(value) < 1e15 && std::trunc(value) == value;
        append(time, whole ? QByteArray::number(static_cast<qlonglong>(value))
                           : QByteArray::number(value, 'g', 15));
    }
    time += ':';
    append(time, rest);
}

core::ImportedReading KlRecordParser::parse(QByteArrayView line) {
    QByteArrayView s = trimmedBlanks(line);
    core::ImportedReading record;
    if (!s.isEmpty()) {
        // One byte, one character: the address keeps its byte value as its code.
        const auto code = static_cast<unsigned char>(s.front());
        const auto end = std::to_chars(scaleId_, scaleId_ + sizeof scaleId_, unsigned(code)).ptr;
        record.scaleId = QByteArrayView(scaleId_, end - scaleId_);
        s = s.sliced(1);
    }

    const qsizetype tag = s.indexOf('!');
    if (tag >= 0) {
        const qsizetype hash = s.indexOf('#');
        // The tag's length is counted from the start of the text: right when "!" leads it.
        const qsizetype length = hash - 1;
        if (hash < 0 || length < 0) {
            throw KlRecordError("tag without a group mark");
        }
        QByteArrayView words = s.sliced(tag + 1);
        words = trimmedBlanks(words.first(std::min(length, words.size())));
        if (words.isEmpty()) {
            throw KlRecordError("tag without a word");
        }
        // The last of the words that runs of blanks separate.
        record.tagId = words.sliced(words.lastIndexOf(' ') + 1);
    }

    const qsizetype group = s.indexOf('#');
    if (group >= 0) {
        record.group = s.sliced(group + 1, std::min<qsizetype>(1, s.size() - group - 1));
        s = s.sliced(std::min(group + 2, s.size()));
    }
    const qsizetype percent = s.indexOf('%');
    if (percent >= 0) {
        carry(reading_, s.first(percent));
        s = s.sliced(percent + 1);
    }
    for (char end : {'\r', '\n'}) {
        const qsizetype at = s.indexOf(end);
        if (at >= 0) {
            s.truncate(at);
        }
    }
    const qsizetype at = s.indexOf('@');
    if (at >= 0) {
        carry(date_, s.first(at));
        s = s.sliced(at + 1);
    }
    const qsizetype colon = s.indexOf(':');
    if (colon >= 0) {
        setTime(s.first(colon), s.sliced(colon + 1));
    }
    record.reading = viewOf(reading_);
    record.date = viewOf(date_);
    record.time = viewOf(time_);
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
        // A record's line is 16 to 69 bytes and its line end; an indicator's are some 40 or so.
        // A station whose readings go to a server takes the card's into its outbox, which sends
        // them on in batches: the import never waits on the server, and loses nothing to it.
        const bool toServer = core::namesServer(m.readingsconn);
        core::ReadingImport import(connection, total / 45,
                                   toServer ? core::ReadingTable::outbox
                                            : core::ReadingTable::datacol);
        KlRecordParser parser(m.sdtimezone);
        int sinceReport = 0;
        LineReader lines(file);
        QByteArrayView line;
        bool tooLong = false;
        try {
            while (lines.next(line, tooLong)) {
                if (progress && ++sinceReport == progressEvery) {
                    sinceReport = 0;
                    if (!progress(lines.position(), total)) {
                        result.cancelled = true;
                        break;
                    }
                }
                if (tooLong || line.contains('\0')) {
                    ++result.badLines;
                    continue;
                }
                if (!isRecordLength(line.size())) {
                    continue;
                }
                import.add(parser.parse(line));
            }
        } catch (const KlRecordError& e) {
            result.error = QString::fromUtf8(e.what());
        } catch (const core::DatabaseError& e) {
            result.error = e.text();
        }
        import.commit();
        result.stored = import.stored();
        if (toServer) {
            collection::sendWaitingReadings(m);
        }
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
