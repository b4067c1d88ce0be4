#pragma once

#include "collection/SpreadsheetApp.h"

#include <QList>
#include <QMap>
#include <QPair>

namespace stellwyn::testsupport {

// A spreadsheet program in memory: running or not, its workbooks in the order they were opened,
// each with sheets and an active one, and cells by row and column. A protected sheet refuses
// writes, as a real office's does.
class RecordingSpreadsheet final : public collection::SpreadsheetApp {
public:
    struct Sheet {
        QMap<QPair<int, int>, QVariant> cells;
        bool locked = false;
    };
    struct Book {
        QList<Sheet> sheets{Sheet{}};
        int active = 0;
    };

    std::unique_ptr<collection::SpreadsheetApplication> attach() override;

    QVariant cell(int book, int row, int column, int sheet = -1) const;
    // The cells of one row, columns 1 to 5, as text ("" where empty).
    QStringList row(int book, int row) const;

    bool running = false;
    QList<Book> books;
};

} // namespace stellwyn::testsupport
