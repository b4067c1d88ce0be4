#include "ReadingExport.h"

#include "core/AppHome.h"
#include "core/WholeFile.h"

#include <QDate>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>
#include <QTime>
#include <filesystem>

#ifdef STELLWYN_HAVE_XLSXWRITER
#include <xlsxwriter.h>
#endif

namespace stellwyn::collection {

namespace {

const QStringList kHeader{"ID", "ScaleID", "Reading", "Date", "Time", "Group", "TagID"};

QString cannotWrite(const QString& path, const QString& why) {
    return QStringLiteral("The readings could not be written to %1: %2")
        .arg(core::displayPath(path), why);
}

// RFC 4180: a field with a comma, a quote or a line break goes in quotes, its quotes doubled.
void appendField(QByteArray& line, const QString& text) {
    const QByteArray bytes = text.toUtf8();
    if (bytes.contains(',') || bytes.contains('"') || bytes.contains('\r') ||
        bytes.contains('\n')) {
        line += '"';
        for (const char c : bytes) {
            if (c == '"') {
                line += '"';
            }
            line += c;
        }
        line += '"';
    } else {
        line += bytes;
    }
}

QByteArray csvLine(const QStringList& fields) {
    QByteArray line;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i > 0) {
            line += ',';
        }
        appendField(line, fields.at(i));
    }
    line += "\r\n";
    return line;
}

QStringList fieldsOf(const core::DataColRow& row) {
    return {
        QString::number(row.id), row.scaleId,         row.reading.toString(), row.date, row.time,
        row.group.toString(),    row.tagId.toString()};
}

qint64 exportCsv(core::Connection& connection, core::DataColOrder order, const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        throw ExportError(cannotWrite(path, file.errorString()));
    }
    file.write(csvLine(kHeader));
    qint64 rows = 0;
    core::forEachReading(connection, order, [&](const core::DataColRow& row) {
        file.write(csvLine(fieldsOf(row)));
        ++rows;
        return true;
    });
    if (!core::commitWhole(file)) {
        throw ExportError(cannotWrite(path, file.errorString()));
    }
    return rows;
}

#ifdef STELLWYN_HAVE_XLSXWRITER
// The sheet's last row; one is the header.
constexpr qint64 xlsxMaxDataRows = LXW_ROW_MAX - 1;

class XlsxFile {
public:
    explicit XlsxFile(const QString& name) {
        lxw_workbook_options options{};
        // Each row goes to a temporary file as it is written: memory stays flat however long
        // the table is.
        options.constant_memory = LXW_TRUE;
        book_ = workbook_new_opt(name.toLocal8Bit().constData(), &options);
        if (book_ == nullptr) {
            return;
        }
        sheet_ = workbook_add_worksheet(book_, "datacol");
        // Wide enough that a date shows as a date, not as "###".
        worksheet_set_column(sheet_, 1, 2, 14, nullptr);
        worksheet_set_column(sheet_, 3, 3, 11, nullptr);
        worksheet_set_column(sheet_, 4, 4, 9, nullptr);
        date_ = workbook_add_format(book_);
        format_set_num_format(date_, "yyyy-mm-dd");
        time_ = workbook_add_format(book_);
        format_set_num_format(time_, "hh:mm:ss");
    }
    ~XlsxFile() {
        if (book_ != nullptr) {
            workbook_close(book_);
        }
    }
    XlsxFile(const XlsxFile&) = delete;
    XlsxFile& operator=(const XlsxFile&) = delete;

    bool opened() const { return sheet_ != nullptr; }

    void text(lxw_row_t row, lxw_col_t column, const QString& value) {
        if (!value.isEmpty()) {
            worksheet_write_string(sheet_, row, column, value.toUtf8().constData(), nullptr);
        }
    }
    void number(lxw_row_t row, lxw_col_t column, double value) {
        worksheet_write_number(sheet_, row, column, value, nullptr);
    }
    // A stored date or time the cell format cannot take stays as its text.
    void date(lxw_row_t row, lxw_col_t column, const QString& value) {
        const QDate d = QDate::fromString(value, Qt::ISODate);
        if (!d.isValid()) {
            return text(row, column, value);
        }
        lxw_datetime at{d.year(), d.month(), d.day(), 0, 0, 0};
        worksheet_write_datetime(sheet_, row, column, &at, date_);
    }
    void time(lxw_row_t row, lxw_col_t column, const QString& value) {
        const QTime t = QTime::fromString(value, QStringLiteral("HH:mm:ss"));
        if (!t.isValid()) {
            return text(row, column, value);
        }
        lxw_datetime at{0, 0, 0, t.hour(), t.minute(), static_cast<double>(t.second())};
        worksheet_write_datetime(sheet_, row, column, &at, time_);
    }

    lxw_error close() {
        lxw_workbook* book = book_;
        book_ = nullptr;
        return workbook_close(book);
    }

private:
    lxw_workbook* book_ = nullptr;
    lxw_worksheet* sheet_ = nullptr;
    lxw_format* date_ = nullptr;
    lxw_format* time_ = nullptr;
};

qint64 exportXlsx(core::Connection& connection, core::DataColOrder order, const QString& path) {
    const QFileInfo target(path);
    QTemporaryFile part(target.absolutePath() + QStringLiteral("/.") + target.fileName() +
                        QStringLiteral(".XXXXXX"));
    if (!part.open()) {
        throw ExportError(cannotWrite(path, part.errorString()));
    }
    part.close();

    qint64 rows = 0;
    {
        XlsxFile xlsx(part.fileName());
        if (!xlsx.opened()) {
            throw ExportError(cannotWrite(path, QStringLiteral("the file cannot be made")));
        }
        for (int column = 0; column < kHeader.size(); ++column) {
            xlsx.text(0, static_cast<lxw_col_t>(column), kHeader.at(column));
        }
        core::forEachReading(connection, order, [&](const core::DataColRow& row) {
            if (rows == xlsxMaxDataRows) {
                return false;
            }
            const auto r = static_cast<lxw_row_t>(rows + 1);
            xlsx.number(r, 0, static_cast<double>(row.id));
            xlsx.text(r, 1, row.scaleId);
            // A weight is text and stays text: the sheet shows it as the scale sent it.
            xlsx.text(r, 2, row.reading.toString());
            xlsx.date(r, 3, row.date);
            xlsx.time(r, 4, row.time);
            xlsx.text(r, 5, row.group.toString());
            xlsx.text(r, 6, row.tagId.toString());
            ++rows;
            return true;
        });
        if (rows == xlsxMaxDataRows) {
            throw ExportError(cannotWrite(
                path, QStringLiteral("an XLSX sheet holds at most %1 rows; export to CSV instead")
                          .arg(xlsxMaxDataRows)));
        }
        const lxw_error closed = xlsx.close();
        if (closed != LXW_NO_ERROR) {
            throw ExportError(cannotWrite(path, QString::fromUtf8(lxw_strerror(closed))));
        }
    }
    std::error_code error;
    std::filesystem::rename(part.fileName().toStdString(), path.toStdString(), error);
    if (error) {
        throw ExportError(cannotWrite(path, QString::fromStdString(error.message())));
    }
    part.setAutoRemove(false);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                    QFileDevice::ReadGroup | QFileDevice::ReadOther);
    return rows;
}
#endif

} // namespace

bool xlsxExportAvailable() {
#ifdef STELLWYN_HAVE_XLSXWRITER
    return true;
#else
    return false;
#endif
}

qint64 exportReadings(core::Connection& connection, core::DataColOrder order, const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == u"csv") {
        return exportCsv(connection, order, path);
    }
#ifdef STELLWYN_HAVE_XLSXWRITER
    if (suffix == u"xlsx") {
        return exportXlsx(connection, order, path);
    }
#endif
    throw ExportError(cannotWrite(path, xlsxExportAvailable()
                                            ? QStringLiteral("name a file ending in .csv or .xlsx")
                                            : QStringLiteral("name a file ending in .csv")));
}

} // namespace stellwyn::collection
