#pragma once

#include <QString>
#include <QVariant>
#include <memory>
#include <stdexcept>

namespace stellwyn::collection {

// A spreadsheet call that did not go through: a closed document, a protected sheet, an office
// that went away. The output passes every one of them over.
class SpreadsheetError : public std::runtime_error {
public:
    explicit SpreadsheetError(const QString& what) : std::runtime_error(what.toStdString()) {}
};

// The sheet the user has in front. Values are text, whole numbers, dates and times; a backend
// writes each as the office's own kind of cell.
class Worksheet {
public:
    virtual ~Worksheet() = default;
    // Rows and columns count from 1.
    virtual void setCell(int row, int column, const QVariant& value) = 0;
};

class Workbook {
public:
    virtual ~Workbook() = default;
    virtual std::unique_ptr<Worksheet> activeSheet() = 0;
};

// A running spreadsheet program that the readings go to. It is never started and no document
// is ever opened for the user: the output only writes into what is open already.
class SpreadsheetApplication {
public:
    virtual ~SpreadsheetApplication() = default;
    virtual int workbookCount() = 0;
    // The first open workbook in the program's own list.
    virtual std::unique_ptr<Workbook> firstWorkbook() = 0;
};

// The way to a running spreadsheet program.
class SpreadsheetApp {
public:
    virtual ~SpreadsheetApp() = default;
    // The running program, or null when none can be reached. Never starts one, never waits
    // long: a store is waiting behind this call.
    virtual std::unique_ptr<SpreadsheetApplication> attach() = 0;
};

// Where no office can be reached at all (a build without its SDK): attaching finds nothing.
class NoSpreadsheetApp final : public SpreadsheetApp {
public:
    std::unique_ptr<SpreadsheetApplication> attach() override { return nullptr; }
};

} // namespace stellwyn::collection
