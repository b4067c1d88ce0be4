#pragma once

namespace stellwyn::core {
class Clock;
class Dialogs;
class Form1Controls;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::collection {

class SpreadsheetApp;

// Copies a stored reading into the open spreadsheet, one row a call, when "Excel Output" is
// ticked. The datacol row was stored before: nothing here can lose it.
class ExcelInterface {
public:
    ExcelInterface(core::Module1& m, core::Form1Controls& f, core::Clock& clock,
                   core::Dialogs& dialogs, SpreadsheetApp& app);

    void excel_write_reading(int slot);
    // Looks for the first empty row of column 1 on a sheet it never set: the walk fails at its
    // first access, so the row written never depends on what the sheet holds.
    int excel_find_empty_row();

private:
    core::Module1& m_;
    core::Form1Controls& f_;
    core::Clock& clock_;
    core::Dialogs& dialogs_;
    SpreadsheetApp& app_;
};

} // namespace stellwyn::collection
