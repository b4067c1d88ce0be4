#pragma once

#include "core/store/DataColTable.h"

#include <QString>
#include <functional>

namespace stellwyn::core {
class Dialogs;
class Form1Controls;
} // namespace stellwyn::core

namespace stellwyn::collection {

// The data collection pane's grid over datacol: its sort options, "Clear List", and the count
// caption on Label20, which changes only where this class sets it.
class CollectionGrid {
public:
    static const QString baseQuery;

    CollectionGrid(core::Form1Controls& f, core::Dialogs& dialogs);

    // Shows the collection pane in place of the scan table; set by the screen.
    std::function<void()> showPane;
    // Asks the operator for the file to export to; an empty name cancels.
    std::function<QString()> chooseExportFile;

    void attach();

    // Re-runs data2's query; whatever is bound to it follows.
    void refreshData2();
    void sortdatacol();
    void opt_datacol_Click();
    void Command2_Click();
    // "Export…": the kept readings in the order the grid shows them.
    void btn_export_Click();
    // The grid's notification that the rows it shows have changed.
    void DataGrid1_RowsChanged();

    // The order the last refresh of data2 asked for.
    core::DataColOrder order() const { return order_; }
    // Every station's rows rather than this one's, on a station whose readings go to a server.
    bool allStations() const;

private:
    void setCountCaption();
    // data2's store, reading the rows the grid shows.
    core::Connection openReadings() const;

    core::Form1Controls& f_;
    core::Dialogs& dialogs_;
    core::DataColOrder order_ = core::DataColOrder::storeOrder;
};

} // namespace stellwyn::collection
