#include "ExcelInterface.h"

#include "SpreadsheetApp.h"
#include "core/Clock.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"

#include <limits>

namespace stellwyn::collection {

namespace {
// Every step of the output stands on its own: a failed one is passed over and the next runs,
// as an operator would rather lose a cell than the rest of the row.
template <typename Step> void passOver(Step&& step) {
    try {
        step();
    } catch (const SpreadsheetError&) {
    } catch (const core::FatalError&) {
    }
}

constexpr int headerRow = 1;
} // namespace

ExcelInterface::ExcelInterface(core::Module1& m, core::Form1Controls& f, core::Clock& clock,
                               core::Dialogs& dialogs, SpreadsheetApp& app)
    : m_(m), f_(f), clock_(clock), dialogs_(dialogs), app_(app) {}

int ExcelInterface::excel_find_empty_row() {
    throw SpreadsheetError(QStringLiteral("Object variable not set"));
}

void ExcelInterface::excel_write_reading(int slot) {
    // Taken before the row is settled: the first "Save Current" of a run writes -1 here.
    const int idvalue = m_.excelrow - 1;

    std::unique_ptr<SpreadsheetApplication> app;
    passOver([&] { app = app_.attach(); });
    if (!app) {
        f_.chk_Excel.setValue(0);
        dialogs_.message(QStringLiteral("Please open Microsoft Excel"));
        return;
    }
    passOver([&] {
        if (app->workbookCount() == 0) {
            f_.chk_Excel.setValue(0);
            dialogs_.message(QStringLiteral("Please open a spreedsheet in Microsoft Excel"));
        }
    });

    std::unique_ptr<Worksheet> sheet;
    passOver([&] {
        std::unique_ptr<Workbook> book = app->firstWorkbook();
        if (book) {
            sheet = book->activeSheet();
        }
    });
    const auto write = [&](int row, int column, const auto& valueOf) {
        passOver([&] {
            if (!sheet) {
                throw SpreadsheetError(QStringLiteral("No sheet"));
            }
            sheet->setCell(row, column, QVariant(valueOf()));
        });
    };

    // Written on every call, so a header the user overwrote comes back.
    const char* const header[] = {"ScaleID", "Reading", "Time", "Date", "ID"};
    for (int column = 1; column <= 5; ++column) {
        write(headerRow, column, [&] { return QString::fromLatin1(header[column - 1]); });
    }
    passOver([&] { excel_find_empty_row(); });
    if (m_.excelrow == 0) {
        m_.excelrow = 2;
    }
    const int row = m_.excelrow;
    write(row, 1, [&] { return m_.scaledesc[slot]; });
    write(row, 2, [&] { return m_.scaleweight[slot]; });
    const QDateTime now = clock_.now();
    write(row, 3, [&] { return now.time(); });
    write(row, 4, [&] { return now.date(); });
    write(row, 5, [&] { return idvalue; });
    // The 16-bit counter overflows past its top, and that failure is passed over like the rest.
    if (m_.excelrow < std::numeric_limits<std::int16_t>::max()) {
        m_.excelrow = static_cast<std::int16_t>(m_.excelrow + 1);
    }
}

} // namespace stellwyn::collection
