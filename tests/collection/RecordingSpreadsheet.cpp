#include "RecordingSpreadsheet.h"

#include <QDateTime>

namespace stellwyn::testsupport {

namespace {
using collection::SpreadsheetError;

class FakeSheet final : public collection::Worksheet {
public:
    FakeSheet(RecordingSpreadsheet& app, int book, int sheet)
        : app_(app), book_(book), sheet_(sheet) {}
    void setCell(int row, int column, const QVariant& value) override {
        RecordingSpreadsheet::Sheet& sheet = app_.books[book_].sheets[sheet_];
        if (sheet.locked) {
            throw SpreadsheetError(QStringLiteral("Sheet refuses writes"));
        }
        sheet.cells[{row, column}] = value;
    }

private:
    RecordingSpreadsheet& app_;
    int book_;
    int sheet_;
};

class FakeBook final : public collection::Workbook {
public:
    FakeBook(RecordingSpreadsheet& app, int book) : app_(app), book_(book) {}
    std::unique_ptr<collection::Worksheet> activeSheet() override {
        return std::make_unique<FakeSheet>(app_, book_, app_.books[book_].active);
    }

private:
    RecordingSpreadsheet& app_;
    int book_;
};

class FakeApplication final : public collection::SpreadsheetApplication {
public:
    explicit FakeApplication(RecordingSpreadsheet& app) : app_(app) {}
    int workbookCount() override { return static_cast<int>(app_.books.size()); }
    std::unique_ptr<collection::Workbook> firstWorkbook() override {
        if (app_.books.isEmpty()) {
            throw SpreadsheetError(QStringLiteral("Subscript out of range"));
        }
        return std::make_unique<FakeBook>(app_, 0);
    }

private:
    RecordingSpreadsheet& app_;
};
} // namespace

std::unique_ptr<collection::SpreadsheetApplication> RecordingSpreadsheet::attach() {
    if (!running) {
        return nullptr;
    }
    return std::make_unique<FakeApplication>(*this);
}

QVariant RecordingSpreadsheet::cell(int book, int row, int column, int sheet) const {
    const Book& b = books[book];
    return b.sheets[sheet < 0 ? b.active : sheet].cells.value({row, column});
}

QStringList RecordingSpreadsheet::row(int book, int row) const {
    QStringList texts;
    for (int column = 1; column <= 5; ++column) {
        const QVariant value = cell(book, row, column);
        texts << (value.typeId() == QMetaType::QTime ? value.toTime().toString(u"HH:mm:ss")
                                                     : value.toString());
    }
    return texts;
}

} // namespace stellwyn::testsupport
