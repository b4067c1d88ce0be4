#include "ScanTable.h"

#include "AcquisitionContext.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"

namespace stellwyn::acquisition {

using core::yieldToEvents;

namespace {
void checkColumn(int column) {
    if (column < 0 || column >= ScanTable::columnCount) {
        throw core::FatalError(
            QStringLiteral("Subscript out of range (scan table column %1)").arg(column));
    }
}
} // namespace

ScanTable::ScanTable(AcquisitionContext& context) : c_(context) {}

QString ScanTable::header(int column) {
    checkColumn(column);
    return column == 0 ? QStringLiteral("Scale ID") : QStringLiteral("Reading");
}

int ScanTable::columnWidth(int column) {
    checkColumn(column);
    return column == 0 ? 3375 : 1500;
}

void ScanTable::attach() {
    c_.f.opt_netscan.Click = [this] { opt_netscan_Click(); };
    c_.f.opt_none.Click = [this] { opt_none_Click(); };
}

void ScanTable::fillgrid() {
    core::Module1& m = c_.m;
    core::TextGrid& grid = c_.f.NetList;
    yieldToEvents();
    grid.clearRows();
    yieldToEvents();
    for (int i = 0; i < m.scalecount; ++i) {
        grid.addRow({core::trimBlanks(m.scaledesc[i]), m.scaleweight[i]});
        yieldToEvents();
    }
}

void ScanTable::showScale(int i) {
    core::TextGrid& grid = c_.f.NetList;
    grid.setText(i + 1, 0, c_.m.scaledesc[i]);
    grid.setText(i + 1, 1, c_.m.scaleweight[i]);
}

void ScanTable::NetList_Click() {
    c_.f.Combo1.setListIndex(c_.f.NetList.row - 1);
}

void ScanTable::opt_netscan_Click() {
    c_.f.datawindowVisible = false;
    c_.f.setupwindowVisible = false;
    c_.f.netwindowVisible = true;
    c_.f.height = heightWithPane;
}

void ScanTable::opt_none_Click() {
    c_.f.datawindowVisible = false;
    c_.f.netwindowVisible = false;
    c_.f.setupwindowVisible = false;
    c_.f.height = heightWithoutPane;
}

void ScanTable::opt_datacol_Click() {
    c_.f.datawindowVisible = true;
    c_.f.netwindowVisible = false;
    c_.f.setupwindowVisible = false;
    c_.f.height = heightWithPane;
}

void ScanTable::opt_setup_Click() {
    c_.f.datawindowVisible = false;
    c_.f.netwindowVisible = false;
    c_.f.setupwindowVisible = true;
    c_.f.height = heightWithPane;
}

} // namespace stellwyn::acquisition
