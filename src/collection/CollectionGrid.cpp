#include "CollectionGrid.h"

#include "ReadingExport.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Yield.h"
#include "core/store/Connection.h"

namespace stellwyn::collection {

const QString CollectionGrid::baseQuery =
    QStringLiteral("select ID,ScaleID,Reading,Date,Time from datacol");

CollectionGrid::CollectionGrid(core::Form1Controls& f, core::Dialogs& dialogs)
    : f_(f), dialogs_(dialogs) {}

void CollectionGrid::attach() {
    for (core::OptionButton* option : {&f_.opt_ID, &f_.opt_datetime, &f_.opt_desc, &f_.opt_grp}) {
        option->Click = [this] { sortdatacol(); };
    }
    f_.Command2.Click = [this] { Command2_Click(); };
    f_.btn_export.Click = [this] { btn_export_Click(); };
    f_.opt_datacol.Click = [this] { opt_datacol_Click(); };
    f_.chk_allstations.Click = [this] {
        if (f_.data2.ConnectionString.isEmpty()) {
            return;
        }
        sortdatacol();
        setCountCaption();
    };
}

bool CollectionGrid::allStations() const {
    return f_.chk_allstations.visible && f_.chk_allstations.value() != 0;
}

core::Connection CollectionGrid::openReadings() const {
    core::Connection connection = core::Connection::open(f_.data2.ConnectionString);
    connection.setAllStations(allStations());
    return connection;
}

void CollectionGrid::refreshData2() {
    // The query runs here, so a store that cannot give the rows fails at the refresh. A server
    // that is away is no such failure: the station collects on into its outbox, the status line
    // says why the grid is empty.
    try {
        core::Connection connection = openReadings();
        core::countReadings(connection);
    } catch (const core::ServerError&) {
    }
    if (f_.data2.Refreshed) {
        f_.data2.Refreshed();
    }
}

void CollectionGrid::sortdatacol() {
    // Each option is tested by itself, the later overriding the earlier.
    QString clause;
    core::DataColOrder order = core::DataColOrder::storeOrder;
    if (f_.opt_grp.value()) {
        clause = QStringLiteral(" order by Reading, date,time");
        order = core::DataColOrder::byReading;
    }
    if (f_.opt_desc.value()) {
        clause = QStringLiteral(" order by scaleid, date,time");
        order = core::DataColOrder::byScaleId;
    }
    if (f_.opt_datetime.value()) {
        clause = QStringLiteral(" order by date,time");
        order = core::DataColOrder::byDateTime;
    }
    if (f_.opt_ID.value()) {
        clause = QStringLiteral(" order by ID,date,time");
        order = core::DataColOrder::byId;
    }
    f_.data2.RecordSource = baseQuery + clause;
    order_ = order;
    refreshData2();
    core::yieldToEvents();
}

void CollectionGrid::setCountCaption() {
    try {
        core::Connection connection = openReadings();
        f_.Label20.caption = QStringLiteral("Data Collection - ") +
                             QString::number(core::countReadings(connection)) +
                             QStringLiteral(" Readings");
    } catch (const core::ServerError&) {
        // The count the caption holds is the last one known.
    }
}

void CollectionGrid::opt_datacol_Click() {
    if (!f_.opt_datacol.value()) {
        return;
    }
    if (showPane) {
        showPane();
    }
    // Chosen before the screen was first activated: no recordset to show yet.
    if (f_.data2.ConnectionString.isEmpty()) {
        return;
    }
    sortdatacol();
    setCountCaption();
}

void CollectionGrid::Command2_Click() {
    dialogs_.beep();
    if (!dialogs_.question(QString(), QStringLiteral("This action will completely clear all of "
                                                     "the saved data.\rDo you wish to proceed?"))) {
        return;
    }
    try {
        core::Connection connection = openReadings();
        core::deleteAllReadings(connection);
    } catch (const core::ServerError& error) {
        dialogs_.message(error.text());
        return;
    }
    refreshData2();
    try {
        setCountCaption();
    } catch (const core::FatalError&) {
    }
}

void CollectionGrid::DataGrid1_RowsChanged() {
    try {
        setCountCaption();
    } catch (const core::FatalError&) {
    }
}

void CollectionGrid::btn_export_Click() {
    const QString path = chooseExportFile ? chooseExportFile() : QString();
    if (path.isEmpty()) {
        return;
    }
    dialogs_.setBusy(true);
    try {
        // A connection of its own: the screen's stores go on through theirs meanwhile.
        core::Connection connection = openReadings();
        exportReadings(connection, order_, path);
    } catch (const core::ServerError& error) {
        dialogs_.setBusy(false);
        dialogs_.message(error.text());
        return;
    } catch (const ExportError& error) {
        dialogs_.setBusy(false);
        dialogs_.message(error.text());
        return;
    }
    dialogs_.setBusy(false);
}

} // namespace stellwyn::collection
