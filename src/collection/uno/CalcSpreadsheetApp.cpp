#include "CalcSpreadsheetApp.h"

#include "UnoText.h"

#include <QDate>
#include <QTime>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/bridge/XUnoUrlResolver.hpp>
#include <com/sun/star/container/XEnumeration.hpp>
#include <com/sun/star/container/XEnumerationAccess.hpp>
#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XController.hpp>
#include <com/sun/star/frame/XDesktop2.hpp>
#include <com/sun/star/frame/XFrame.hpp>
#include <com/sun/star/frame/XFrames.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/lang/Locale.hpp>
#include <com/sun/star/lang/XComponent.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/sheet/XSpreadsheets.hpp>
#include <com/sun/star/table/XCell.hpp>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <com/sun/star/util/XNumberFormats.hpp>
#include <com/sun/star/util/XNumberFormatsSupplier.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <csignal>
#include <rtl/bootstrap.hxx>
#include <vector>

namespace stellwyn::collection {

namespace css = com::sun::star;
using css::uno::Reference;
using css::uno::UNO_QUERY;
using css::uno::UNO_QUERY_THROW;
using rtl::OUString;
using uno::toOUString;
using uno::toQString;

namespace {

[[noreturn]] void rethrow(const css::uno::Exception& error) {
    throw SpreadsheetError(toQString(error.Message));
}

// Runs one call into the office; any failure it reports becomes ours.
template <typename Call> auto office(Call&& call) {
    try {
        return call();
    } catch (const css::uno::Exception& error) {
        rethrow(error);
    }
}

// The open spreadsheets in the order they were opened, as a user counts them: the desktop's
// frames keep that order, where its list of components does not.
std::vector<Reference<css::sheet::XSpreadsheetDocument>>
spreadsheetDocuments(const Reference<css::frame::XDesktop2>& desktop) {
    std::vector<Reference<css::sheet::XSpreadsheetDocument>> documents;
    Reference<css::container::XIndexAccess> frames(desktop->getFrames(), UNO_QUERY_THROW);
    for (sal_Int32 i = 0; i < frames->getCount(); ++i) {
        Reference<css::frame::XFrame> frame(frames->getByIndex(i), UNO_QUERY);
        Reference<css::frame::XController> controller =
            frame.is() ? frame->getController() : Reference<css::frame::XController>();
        Reference<css::sheet::XSpreadsheetDocument> document(
            controller.is() ? controller->getModel() : Reference<css::frame::XModel>(), UNO_QUERY);
        if (document.is()) {
            documents.push_back(document);
        }
    }
    return documents;
}

// The number format of the document for a format code, added to the document when it has none.
sal_Int32 formatKey(const Reference<css::util::XNumberFormats>& formats, const OUString& code) {
    const css::lang::Locale neutral;
    const sal_Int32 key = formats->queryKey(code, neutral, false);
    return key >= 0 ? key : formats->addNew(code, neutral);
}

class CalcSheet final : public Worksheet {
public:
    CalcSheet(Reference<css::sheet::XSpreadsheet> sheet,
              Reference<css::util::XNumberFormats> formats)
        : sheet_(std::move(sheet)), formats_(std::move(formats)) {}

    void setCell(int row, int column, const QVariant& value) override {
        office([&] {
            Reference<css::table::XCell> cell = sheet_->getCellByPosition(column - 1, row - 1);
            switch (value.typeId()) {
            case QMetaType::Int:
            case QMetaType::LongLong:
                cell->setValue(value.toDouble());
                break;
            // A date and a time are values in a date and a time format, as Excel shows them.
            case QMetaType::QDate:
                cell->setValue(static_cast<double>(calcEpoch.daysTo(value.toDate())));
                setFormat(cell, "YYYY-MM-DD");
                break;
            case QMetaType::QTime:
                cell->setValue(value.toTime().msecsSinceStartOfDay() / msecsPerDay);
                setFormat(cell, "HH:MM:SS");
                break;
            default:
                // A text goes in as typed, as it would into Excel: "  12.5" becomes a number.
                cell->setFormula(toOUString(value.toString()));
                break;
            }
        });
    }

private:
    static constexpr double msecsPerDay = 86400000.0;
    static inline const QDate calcEpoch{1899, 12, 30};

    void setFormat(const Reference<css::table::XCell>& cell, const char* code) {
        Reference<css::beans::XPropertySet> properties(cell, UNO_QUERY_THROW);
        properties->setPropertyValue(
            "NumberFormat", css::uno::Any(formatKey(formats_, OUString::createFromAscii(code))));
    }

    Reference<css::sheet::XSpreadsheet> sheet_;
    Reference<css::util::XNumberFormats> formats_;
};

class CalcBook final : public Workbook {
public:
    explicit CalcBook(Reference<css::sheet::XSpreadsheetDocument> document)
        : document_(std::move(document)) {}

    std::unique_ptr<Worksheet> activeSheet() override {
        return office([&] {
            Reference<css::frame::XModel> model(document_, UNO_QUERY_THROW);
            Reference<css::sheet::XSpreadsheetView> view(model->getCurrentController(), UNO_QUERY);
            Reference<css::sheet::XSpreadsheet> sheet;
            if (view.is()) {
                sheet = view->getActiveSheet();
            } else {
                // A document loaded without a window has no view: its first sheet is the one
                // it would open on.
                Reference<css::container::XIndexAccess> sheets(document_->getSheets(),
                                                               UNO_QUERY_THROW);
                sheet.set(sheets->getByIndex(0), UNO_QUERY_THROW);
            }
            Reference<css::util::XNumberFormatsSupplier> formats(document_, UNO_QUERY_THROW);
            return std::make_unique<CalcSheet>(sheet, formats->getNumberFormats());
        });
    }

private:
    Reference<css::sheet::XSpreadsheetDocument> document_;
};

class CalcApplication final : public SpreadsheetApplication {
public:
    explicit CalcApplication(Reference<css::frame::XDesktop2> desktop)
        : desktop_(std::move(desktop)) {}

    int workbookCount() override {
        return office([&] { return static_cast<int>(spreadsheetDocuments(desktop_).size()); });
    }
    std::unique_ptr<Workbook> firstWorkbook() override {
        return office([&] {
            const auto documents = spreadsheetDocuments(desktop_);
            if (documents.empty()) {
                throw SpreadsheetError(QStringLiteral("No spreadsheet is open"));
            }
            return std::make_unique<CalcBook>(documents.front());
        });
    }

private:
    Reference<css::frame::XDesktop2> desktop_;
};

} // namespace

// The local end of the bridge: made once, at the first attach, since it loads the office's
// type libraries.
struct CalcSpreadsheetApp::Bridge {
    Reference<css::uno::XComponentContext> local;
};

CalcSpreadsheetApp::CalcSpreadsheetApp(QString pipeName) : pipeName_(std::move(pipeName)) {}

CalcSpreadsheetApp::~CalcSpreadsheetApp() = default;

QString CalcSpreadsheetApp::programFolder() {
    return QStringLiteral(STELLWYN_OFFICE_PROGRAM_DIR);
}

std::unique_ptr<SpreadsheetApplication> CalcSpreadsheetApp::attach() {
    try {
        if (!bridge_) {
            // The bridge writes to the office's pipe; an office that has gone away must be an
            // exception here, not SIGPIPE ending the whole program.
            std::signal(SIGPIPE, SIG_IGN);
            auto bridge = std::make_unique<Bridge>();
            // The office's own settings say where its libraries and types are, unless the
            // environment names another office.
            OUString given;
            if (!rtl::Bootstrap::get(OUString("URE_BOOTSTRAP"), given)) {
                rtl::Bootstrap::set(OUString("URE_BOOTSTRAP"),
                                    toOUString(QStringLiteral("vnd.sun.star.pathname:") +
                                               programFolder() + QStringLiteral("/fundamentalrc")));
            }
            bridge->local = cppu::defaultBootstrap_InitialComponentContext();
            bridge_ = std::move(bridge);
        }
        Reference<css::bridge::XUnoUrlResolver> resolver =
            css::bridge::UnoUrlResolver::create(bridge_->local);
        // A pipe with nobody listening refuses at once: this never waits for an office.
        Reference<css::uno::XComponentContext> remote(
            resolver->resolve(toOUString(QStringLiteral("uno:pipe,name=%1;urp;"
                                                        "StarOffice.ComponentContext")
                                             .arg(pipeName_))),
            UNO_QUERY_THROW);
        return std::make_unique<CalcApplication>(css::frame::Desktop::create(remote));
    } catch (const css::uno::Exception&) {
        return nullptr;
    }
}

} // namespace stellwyn::collection
