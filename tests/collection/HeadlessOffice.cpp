#include "HeadlessOffice.h"

#include "collection/uno/CalcSpreadsheetApp.h"
#include "collection/uno/UnoText.h"

#include <QCoreApplication>
#include <QTest>
#include <QUrl>
#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/container/XEnumeration.hpp>
#include <com/sun/star/container/XEnumerationAccess.hpp>
#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XComponentLoader.hpp>
#include <com/sun/star/frame/XController.hpp>
#include <com/sun/star/frame/XDesktop2.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/sheet/XSpreadsheets.hpp>
#include <com/sun/star/table/XCell.hpp>
#include <com/sun/star/text/XTextRange.hpp>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <csignal>
#include <rtl/bootstrap.hxx>
#include <sys/prctl.h>
#include <vector>

namespace stellwyn::testsupport {

namespace css = com::sun::star;
using css::uno::Reference;
using css::uno::UNO_QUERY;
using css::uno::UNO_QUERY_THROW;
using rtl::OUString;

using collection::uno::toOUString;
using collection::uno::toQString;

struct HeadlessOffice::Uno {
    Reference<css::frame::XDesktop2> desktop;

    // The documents this helper opened, in the order it opened them; closed ones drop out.
    std::vector<Reference<css::sheet::XSpreadsheetDocument>> opened;

    const std::vector<Reference<css::sheet::XSpreadsheetDocument>>& documents() { return opened; }
    Reference<css::sheet::XSpreadsheet> sheet(int document, int index) {
        Reference<css::sheet::XSpreadsheetDocument> d = documents().at(document);
        if (index < 0) {
            Reference<css::frame::XModel> model(d, UNO_QUERY_THROW);
            Reference<css::sheet::XSpreadsheetView> view(model->getCurrentController(),
                                                         UNO_QUERY_THROW);
            return view->getActiveSheet();
        }
        Reference<css::container::XIndexAccess> sheets(d->getSheets(), UNO_QUERY_THROW);
        return Reference<css::sheet::XSpreadsheet>(sheets->getByIndex(index), UNO_QUERY_THROW);
    }
    Reference<css::table::XCell> cell(int document, int row, int column, int index) {
        return sheet(document, index)->getCellByPosition(column - 1, row - 1);
    }
    int load(const QString& url, bool hidden) {
        Reference<css::frame::XComponentLoader> loader(desktop, UNO_QUERY_THROW);
        css::uno::Sequence<css::beans::PropertyValue> args(1);
        args.getArray()[0].Name = "Hidden";
        args.getArray()[0].Value <<= hidden;
        Reference<css::lang::XComponent> loaded =
            loader->loadComponentFromURL(toOUString(url), "_blank", 0, args);
        opened.emplace_back(loaded, UNO_QUERY_THROW);
        return static_cast<int>(opened.size()) - 1;
    }
};

HeadlessOffice::HeadlessOffice()
    : pipe_(QStringLiteral("stellwyn-test-%1").arg(QCoreApplication::applicationPid())) {}

HeadlessOffice::~HeadlessOffice() {
    if (uno_) {
        try {
            closeAll();
            uno_->desktop->terminate();
        } catch (const css::uno::Exception&) {
        }
        uno_.reset();
    }
    if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(10000)) {
        process_.kill();
        process_.waitForFinished(5000);
    }
}

bool HeadlessOffice::start(QString& error) {
    // soffice.bin itself, not its launcher script, so that the id we hold is the office's.
    process_.setProgram(collection::CalcSpreadsheetApp::programFolder() +
                        QStringLiteral("/soffice.bin"));
    process_.setArguments(
        {QStringLiteral("--headless"), QStringLiteral("--invisible"), QStringLiteral("--nologo"),
         QStringLiteral("--norestore"), QStringLiteral("--nodefault"),
         QStringLiteral("-env:UserInstallation=") + QUrl::fromLocalFile(profile_.path()).toString(),
         QStringLiteral("--accept=pipe,name=%1;urp;").arg(pipe_)});
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Should the test die without stopping it, the office goes too: left running, it would hold
    // the test runner's output open until its time limit.
    process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    collection::CalcSpreadsheetApp calc(pipe_);
    // On a fresh profile the office fills it and then exits with 81 to be started again, which
    // its launcher script would do; it takes a while either way.
    constexpr int restartAfterProfile = 81;
    for (int attempt = 0; attempt < 2; ++attempt) {
        process_.start();
        if (!process_.waitForStarted(10000)) {
            error = process_.errorString();
            return false;
        }
        const bool up = QTest::qWaitFor(
            [&] { return process_.state() == QProcess::NotRunning || calc.attach() != nullptr; },
            120000);
        if (up && process_.state() == QProcess::Running) {
            break;
        }
        if (process_.state() == QProcess::Running || process_.exitCode() != restartAfterProfile) {
            error = QStringLiteral("the office did not accept on pipe %1 (exit code %2)")
                        .arg(pipe_)
                        .arg(process_.exitCode());
            return false;
        }
    }
    // As the program does: an office gone away is an exception, not SIGPIPE ending the test.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        Reference<css::uno::XComponentContext> local =
            cppu::defaultBootstrap_InitialComponentContext();
        Reference<css::uno::XComponentContext> remote(
            css::bridge::UnoUrlResolver::create(local)->resolve(toOUString(
                QStringLiteral("uno:pipe,name=%1;urp;StarOffice.ComponentContext").arg(pipe_))),
            UNO_QUERY_THROW);
        uno_ = std::make_unique<Uno>();
        uno_->desktop = css::frame::Desktop::create(remote);
    } catch (const css::uno::Exception& e) {
        error = toQString(e.Message);
        return false;
    }
    return true;
}

int HeadlessOffice::newSpreadsheet() {
    return uno_->load(QStringLiteral("private:factory/scalc"), true);
}

int HeadlessOffice::open(const QString& path) {
    return uno_->load(QUrl::fromLocalFile(path).toString(), true);
}

void HeadlessOffice::closeAll() {
    // Also what a test left open by other means: the office's whole list.
    Reference<css::container::XEnumeration> all =
        uno_->desktop->getComponents()->createEnumeration();
    while (all->hasMoreElements()) {
        Reference<css::util::XCloseable> document(all->nextElement(), UNO_QUERY);
        if (document.is()) {
            document->close(true);
        }
    }
    uno_->opened.clear();
}

void HeadlessOffice::addSheet(int document, bool makeActive) {
    Reference<css::sheet::XSpreadsheetDocument> d = uno_->documents().at(document);
    Reference<css::container::XIndexAccess> sheets(d->getSheets(), UNO_QUERY_THROW);
    const sal_Int16 at = static_cast<sal_Int16>(sheets->getCount());
    d->getSheets()->insertNewByName(toOUString(QStringLiteral("Sheet%1").arg(at + 1)), at);
    if (makeActive) {
        Reference<css::frame::XModel> model(d, UNO_QUERY_THROW);
        Reference<css::sheet::XSpreadsheetView> view(model->getCurrentController(),
                                                     UNO_QUERY_THROW);
        view->setActiveSheet(uno_->sheet(document, at));
    }
}

QString HeadlessOffice::text(int document, int row, int column, int sheet) {
    Reference<css::text::XTextRange> range(uno_->cell(document, row, column, sheet),
                                           UNO_QUERY_THROW);
    return toQString(range->getString());
}

QString HeadlessOffice::kind(int document, int row, int column, int sheet) {
    switch (uno_->cell(document, row, column, sheet)->getType()) {
    case css::table::CellContentType_TEXT:
        return QStringLiteral("text");
    case css::table::CellContentType_VALUE:
        return QStringLiteral("value");
    case css::table::CellContentType_FORMULA:
        return QStringLiteral("formula");
    default:
        return QStringLiteral("empty");
    }
}

double HeadlessOffice::value(int document, int row, int column) {
    return uno_->cell(document, row, column, -1)->getValue();
}

} // namespace stellwyn::testsupport
