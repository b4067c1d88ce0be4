#pragma once

#include "core/store/DataColTable.h"

#include <QByteArrayView>
#include <QString>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace stellwyn::core {
class Module1;
}

namespace stellwyn::sdmemory {

// A record the reader cannot take apart: a tag "!" with no "#" after it.
class KlRecordError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The indicator writes lines of 16 to 69 characters; anything else is not a record.
bool isRecordLength(qsizetype length);

// Takes the records of a KL.Dat apart, line by line, in the card's bytes: a card holds a million
// of them. Reading, date and time carry over from the previous record when a line lacks them;
// tag and group do not. The hour of a logged time is moved from the indicator's clock to the
// station's zone: the indicator keeps the time three hours ahead of the Pacific zone, and the
// hour is shifted with no wrap and no change of date.
class KlRecordParser {
public:
    explicit KlRecordParser(const QString& timezone);
    // line: one line of the file, its line end removed, of a record's length. The record's views
    // point into the line and into the parser, and hold until the next call.
    core::ImportedReading parse(QByteArrayView line);

private:
    void setTime(QByteArrayView hour, QByteArrayView rest);

    int hourOffset_ = 0;
    char scaleId_[4] = {};
    // Carried from record to record; unset until a record sets them.
    std::optional<std::string> reading_;
    std::optional<std::string> date_;
    std::optional<std::string> time_;
};

struct KlImportResult {
    int stored = 0;
    // Lines passed over because they held bytes that are not text or ran past 64 KiB.
    int badLines = 0;
    bool cancelled = false;
    // Why the read stopped early; empty when it read to the end or was cancelled.
    QString error;
};

// Told now and then how far the read is (bytes of the file); returns false to stop it.
using KlImportProgress = std::function<bool(qint64 done, qint64 total)>;

// Reads the file into datacol in one transaction. Stopped by an error or by the operator, it
// keeps the rows read before the stop.
KlImportResult importKlDat(const QString& path, core::Module1& m,
                           const KlImportProgress& progress = {});

// Empties the file to the single blank line that the reader passes over. False with why.
bool eraseKlDat(const QString& path, QString* error);

} // namespace stellwyn::sdmemory
