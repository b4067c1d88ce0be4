#include "LowerPanesView.h"

#include "Form1.h"
#include "Twips.h"
#include "collection/ReadingExport.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTableWidget>
#include <array>

namespace stellwyn::display {

namespace {
constexpr int fontTwips = 160;
constexpr int rowTwips = 270;
// Room for the grid's frame and its scroll bar beside the two columns.
constexpr int gridMarginTwips = 330;
// The saved readings' columns ID, ScaleID, Reading and Date, each wide enough for its text in
// the grid's font with room to spare, so that they hold it at every size the screen takes. Time,
// the last, stretches over the rest of the grid.
constexpr std::array<int, 4> dataColumnTwips = {1100, 1300, 1800, 1800};

void paneBackground(QWidget* pane) {
    pane->setAutoFillBackground(true);
}
} // namespace

NetWindowView::NetWindowView(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), frame_(new QGroupBox(this)), grid_(new QTableWidget(frame_)) {
    setObjectName(QStringLiteral("netwindow"));
    paneBackground(this);
    frame_->setObjectName(QStringLiteral("NetFrame"));
    grid_->setObjectName(QStringLiteral("NetList"));
    grid_->setColumnCount(acquisition::ScanTable::columnCount);
    QStringList headers;
    for (int c = 0; c < acquisition::ScanTable::columnCount; ++c) {
        headers << acquisition::ScanTable::header(c);
    }
    grid_->setHorizontalHeaderLabels(headers);
    grid_->verticalHeader()->hide();
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::SingleSelection);
    grid_->horizontalHeader()->setStretchLastSection(false);
    connect(grid_, &QTableWidget::cellClicked, this, [this](int row, int) {
        form_.runEvent([this, row] {
            core::Form1Controls& f = form_.controls();
            // Row 0 of the grid is its fixed header; the table's rows start at 1.
            f.NetList.row = row + 1;
            form_.scanTable().NetList_Click();
        });
    });
    setScale(pixelsPerTwip(this));
}

void NetWindowView::setScale(double scale) {
    scale_ = scale;
    const Place& place = form_.layout().netwindow;
    int gridWidth = gridMarginTwips;
    for (int c = 0; c < acquisition::ScanTable::columnCount; ++c) {
        gridWidth += acquisition::ScanTable::columnWidth(c);
    }
    frame_->setGeometry(toPixels({60, 0, gridWidth + 240, place.height - 120}, scale));
    grid_->setGeometry(toPixels({120, 270, gridWidth, place.height - 480}, scale));
    QFont paneFont = font();
    paneFont.setPixelSize(std::max(1, toPixels(fontTwips, scale)));
    frame_->setFont(paneFont);
    grid_->setFont(paneFont);
    grid_->horizontalHeader()->setFont(paneFont);
    grid_->verticalHeader()->setDefaultSectionSize(toPixels(rowTwips, scale));
    grid_->horizontalHeader()->setFixedHeight(toPixels(rowTwips, scale));
    for (int c = 0; c < acquisition::ScanTable::columnCount; ++c) {
        grid_->setColumnWidth(c, toPixels(acquisition::ScanTable::columnWidth(c), scale));
    }
}

void NetWindowView::sync() {
    const core::Form1Controls& f = form_.controls();
    frame_->setTitle(f.NetFrame.caption);
    const core::TextGrid& state = f.NetList;
    grid_->setVisible(state.visible);
    const int rows = state.rows() - 1;
    if (grid_->rowCount() != rows) {
        grid_->setRowCount(rows);
    }
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < state.columns(); ++c) {
            const QString text = state.text(r + 1, c);
            QTableWidgetItem* item = grid_->item(r, c);
            if (item == nullptr) {
                grid_->setItem(r, c, new QTableWidgetItem(text));
            } else if (item->text() != text) {
                item->setText(text);
            }
        }
    }
}

DataWindowView::DataWindowView(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), bound_(form, this, fontTwips), caption_(new QLabel(this)),
      grid_(new QTableView(this)) {
    setObjectName(QStringLiteral("datawindow"));
    paneBackground(this);
    core::Form1Controls& f = form_.controls();
    bound_.afterInput = [this] { sync(); };

    caption_->setObjectName(QStringLiteral("Label20"));
    grid_->setObjectName(QStringLiteral("DataGrid1"));
    grid_->setAccessibleName(QStringLiteral("Saved readings"));
    grid_->setModel(&form_.data2Rows());
    grid_->verticalHeader()->hide();
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::SingleSelection);
    grid_->horizontalHeader()->setStretchLastSection(true);
    // The grid's notification: the operator brought other rows into view.
    connect(grid_->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        form_.runEvent([this] { form_.grid().DataGrid1_RowsChanged(); });
        sync();
    });

    QGroupBox* sortBy = bound_.frame(f.Frame1, {8400, 0, 3600, 870}, "Frame1");
    bound_.option(f.opt_ID, sortBy, {120, 240, 1200, 255}, "opt_ID");
    bound_.option(f.opt_datetime, sortBy, {1560, 240, 1500, 255}, "opt_datetime");
    bound_.option(f.opt_desc, sortBy, {120, 540, 1200, 255}, "opt_desc");
    bound_.option(f.opt_grp, sortBy, {1560, 540, 1500, 255}, "opt_grp");
    bound_.button(f.btn_LogData, this, {8400, 960, 1740, 360}, "btn_LogData")
        ->setToolTip(QStringLiteral("Keeps the reading of the active scale."));
    bound_.button(f.btn_dataLogAll, this, {10260, 960, 1740, 360}, "btn_dataLogAll")
        ->setToolTip(QStringLiteral("Keeps the reading of every scale."));
    bound_.check(f.chk_SaveOnPrint, this, {8400, 1410, 1740, 270}, "chk_SaveOnPrint")
        ->setToolTip(QStringLiteral("Keeps every reading the network scan takes."));
    bound_.check(f.chk_Excel, this, {10260, 1410, 1740, 270}, "chk_Excel");
    bound_.check(f.Check1, this, {8400, 1740, 1740, 270}, "Check1");
    bound_.check(f.chk_Reset_Row, this, {10260, 1740, 1740, 270}, "chk_Reset_Row");
    bound_.label(f.Datamsg, this, {8400, 2040, 3600, 270}, "Datamsg");
    // Where the hidden Datamsg stands: it is never shown.
    bound_.check(f.chk_allstations, this, {8400, 2040, 3600, 270}, "chk_allstations")
        ->setToolTip(QStringLiteral("Shows the readings of every station on the server, not only "
                                    "this one's."));
    bound_.button(f.Command2, this, {8400, 2400, 1740, 360}, "Command2")
        ->setToolTip(QStringLiteral("Deletes every saved reading."));
    bound_.button(f.btn_export, this, {10260, 2400, 1740, 360}, "btn_export")
        ->setToolTip(QStringLiteral("Writes the saved readings, in the grid's order, to a CSV or "
                                    "XLSX file."));
    form_.grid().chooseExportFile = [this] {
        const QString filter = collection::xlsxExportAvailable()
                                   ? QStringLiteral("Spreadsheet (*.xlsx);;CSV (*.csv)")
                                   : QStringLiteral("CSV (*.csv)");
        return QFileDialog::getSaveFileName(this, QStringLiteral("Export Readings"), QString(),
                                            filter);
    };
    setScale(pixelsPerTwip(this));
}

void DataWindowView::setScale(double scale) {
    bound_.setScale(scale);
    caption_->setGeometry(toPixels({120, 60, 8160, 300}, scale));
    QFont captionFont = font();
    captionFont.setPixelSize(std::max(1, toPixels(200, scale)));
    captionFont.setBold(true);
    caption_->setFont(captionFont);
    grid_->setGeometry(toPixels({120, 390, 8160, 2520}, scale));
    QFont gridFont = font();
    gridFont.setPixelSize(std::max(1, toPixels(fontTwips, scale)));
    grid_->setFont(gridFont);
    grid_->horizontalHeader()->setFont(gridFont);
    grid_->verticalHeader()->setDefaultSectionSize(toPixels(rowTwips, scale));
    grid_->horizontalHeader()->setFixedHeight(toPixels(rowTwips, scale));
    for (std::size_t c = 0; c < dataColumnTwips.size(); ++c) {
        grid_->setColumnWidth(static_cast<int>(c), toPixels(dataColumnTwips.at(c), scale));
    }
}

void DataWindowView::sync() {
    const core::Label& state = form_.controls().Label20;
    caption_->setText(state.caption);
    caption_->setVisible(state.visible);
    bound_.sync();
}

} // namespace stellwyn::display
