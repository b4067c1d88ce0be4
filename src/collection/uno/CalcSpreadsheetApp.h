#pragma once

#include "collection/SpreadsheetApp.h"

#include <QString>
#include <memory>

namespace stellwyn::collection {

// LibreOffice Calc, reached over its UNO bridge on a named pipe: the office that was started
// to accept connections there (soffice --accept="pipe,name=stellwyn;urp;"). Attaching never
// starts an office and never opens a document; with no office on the pipe it finds nothing at
// once. The workbooks are the open spreadsheet documents in the order they were opened.
class CalcSpreadsheetApp final : public SpreadsheetApp {
public:
    static constexpr const char* defaultPipe = "stellwyn";

    explicit CalcSpreadsheetApp(QString pipeName = QString::fromLatin1(defaultPipe));
    ~CalcSpreadsheetApp() override;

    std::unique_ptr<SpreadsheetApplication> attach() override;

    // The office's program folder this build was made against.
    static QString programFolder();

private:
    struct Bridge;
    QString pipeName_;
    std::unique_ptr<Bridge> bridge_;
};

} // namespace stellwyn::collection
