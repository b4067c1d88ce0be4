#pragma once

#include "collection/SpreadsheetApp.h"

#include <QList>
#include <QMap>
#include <QPair>

namespace stellwyn::testsupport {

// A spreadsheet program in memory: running or not, and its workbooks in the order they were
// opened, each shown here by its active sheet. A protected sheet refuses writes, as a real
// office's does.
class RecordingSpreadsheet final : public collection::SpreadsheetApp {
public:
    struct Sheet {
        QMap<QPair<int, int>, QVariant> cells;
        bool locked = false;
    };

    std::unique_ptr<collection::SpreadsheetApplication> attach() override;

    // The cells of one row of the first workbook, columns 1 to 5, as text ("" where empty).
    QStringList row(int row) const;

    bool running = false;
    QList<Sheet> books;
};

} // namespace stellwyn::testsupport
