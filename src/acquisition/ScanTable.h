#pragma once

#include <QString>

namespace stellwyn::acquisition {

struct AcquisitionContext;

// The network scan table under the main display: one row per scale with its latest reading,
// row i + 1 for table entry i. It is a view of the scale table and keeps nothing of its own; the
// scanners write its cells on every reading they accept, shown or not.
class ScanTable {
public:
    // Form heights in twips: with a lower pane shown, and without one.
    static constexpr int heightWithPane = 8050;
    static constexpr int heightWithoutPane = 5905;
    static constexpr int columnCount = 2;

    explicit ScanTable(AcquisitionContext& context);

    // The fixed header row and the column widths in twips, for the view.
    static QString header(int column);
    static int columnWidth(int column);

    // Attaches the handlers of the "Show" options this table owns. "Data Collection" belongs to
    // the collection pane, whose handler calls opt_datacol_Click for its part.
    void attach();

    // One row per scale, in the order of the table.
    void fillgrid();
    // The row of table entry i shows its description and reading.
    void showScale(int i);
    // A click on a row picks that scale for the main display.
    void NetList_Click();

    void opt_netscan_Click();
    void opt_none_Click();
    void opt_datacol_Click();
    // The indicator setup pane takes the place of the other lower panes.
    void opt_setup_Click();

private:
    AcquisitionContext& c_;
};

} // namespace stellwyn::acquisition
