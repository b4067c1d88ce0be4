#include "LowerPanesView.h"

#include "Form1.h"
#include "Twips.h"

#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>

namespace stellwyn::display {

namespace {
constexpr int fontTwips = 160;
constexpr int rowTwips = 270;
// Room for the grid's frame and its scroll bar beside the two columns.
constexpr int gridMarginTwips = 330;

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
    : QWidget(parent), form_(form), caption_(new QLabel(this)) {
    setObjectName(QStringLiteral("datawindow"));
    paneBackground(this);
    caption_->setObjectName(QStringLiteral("Label20"));
    setScale(pixelsPerTwip(this));
}

void DataWindowView::setScale(double scale) {
    caption_->setGeometry(toPixels({120, 60, 6000, 300}, scale));
    QFont captionFont = font();
    captionFont.setPixelSize(std::max(1, toPixels(200, scale)));
    captionFont.setBold(true);
    caption_->setFont(captionFont);
}

void DataWindowView::sync() {
    const core::Label& state = form_.controls().Label20;
    caption_->setText(state.caption);
    caption_->setVisible(state.visible);
}

} // namespace stellwyn::display
