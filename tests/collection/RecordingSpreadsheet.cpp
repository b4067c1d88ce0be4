#include "RecordingSpreadsheet.h"

#include <QDateTime>

namespace stellwyn::testsupport {

namespace {
using collection::SpreadsheetError;

class FakeSheet final : public collection::Worksheet, public collection::Workbook {
public:
    explicit FakeSheet(RecordingSpreadsheet::Sheet& sheet) : sheet_(sheet) {}
    void setCell(int row, int column, const QVariant& value) override {
        if (sheet_.locked) {
            throw SpreadsheetError(QStringLiteral("The sheet is protected"));
        }
        sheet_.cells[{row, column}] = value;
    }
    std::unique_ptr<collection::Worksheet> activeSheet() override {
        return std::make_unique<FakeSheet>(sheet_);
    }

private:
    RecordingSpreadsheet::Sheet& sheet_;
};

class FakeApplication final : public collection::SpreadsheetApplication {
public:
    explicit FakeApplication(RecordingSpreadsheet& app) : app_(app) {}
    int workbookCount() override { return static_cast<int>(app_.books.size()); }
    std::unique_ptr<collection::Workbook> firstWorkbook() override {
        if (app_.books.isEmpty()) {
            throw SpreadsheetError(QStringLiteral("Subscript out of range"));
        }
        return std::make_unique<FakeSheet>(app_.books.first());
    }

private:
    RecordingSpreadsheet& app_;
};
} // namespace

std::unique_ptr<collection::SpreadsheetApplication> RecordingSpreadsheet::attach() {
    return running ? std::make_unique<FakeApplication>(*this) : nullptr;
}

QStringList RecordingSpreadsheet::row(int row) const {
    QStringList texts;
    for (int column = 1; column <= 5; ++column) {
        const QVariant value = books.first().cells.value({row, column});
        texts << (value.typeId() == QMetaType::QTime ? value.toTime().toString(u"HH:mm:ss")
                                                     : value.toString());
    }
    return texts;
}

} // namespace stellwyn::testsupport
