#pragma once

#include "core/store/DataColTable.h"

#include <QString>
#include <stdexcept>

namespace stellwyn::collection {

// An export that could not be written; the text says why, for the operator. The file named was
// left as it was.
class ExportError : public std::runtime_error {
public:
    explicit ExportError(const QString& text)
        : std::runtime_error(text.toStdString()), text_(text) {}
    const QString& text() const { return text_; }

private:
    QString text_;
};

// Writes every datacol row in the order to `path`: CSV (RFC 4180, UTF-8) or XLSX, chosen by
// the file's extension. Rows stream from the store to the file one at a time, so the length of
// the table costs time, never memory. The file is written beside its final name and put in
// place at the end: a reader never sees half a file, and one that holds the old file open keeps
// it. Returns the number of rows written.
qint64 exportReadings(core::Connection& connection, core::DataColOrder order, const QString& path);

// True when this build writes XLSX.
bool xlsxExportAvailable();

} // namespace stellwyn::collection
