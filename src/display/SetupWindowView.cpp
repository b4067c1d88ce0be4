#include "SetupWindowView.h"

#include "Form1.h"
#include "Twips.h"

#include <QApplication>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QTableWidget>
#include <algorithm>

namespace stellwyn::display {

namespace {
constexpr int fontTwips = 160;
constexpr int rowTwips = 270;
constexpr int buttonStep = 375;
constexpr Place buttonPlace{120, 240, 2060, 345};

enum Column { wordColumn, groupColumn, outputColumn, totalsColumn, columnCount };

Place nthButton(int n) {
    return {buttonPlace.left, buttonPlace.top + n * buttonStep, buttonPlace.width,
            buttonPlace.height};
}

void setCell(QTableWidget* table, int row, int column, const QString& text, bool editable) {
    QTableWidgetItem* item = table->item(row, column);
    if (item == nullptr) {
        item = new QTableWidgetItem;
        table->setItem(row, column, item);
    }
    const Qt::ItemFlags flags = editable
                                    ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable
                                    : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (item->flags() != flags) {
        item->setFlags(flags);
    }
    if (item->text() != text) {
        item->setText(text);
    }
}
} // namespace

SetupWindowView::SetupWindowView(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), bound_(form, this, fontTwips), title_(new QLabel(this)),
      table_(new QTableWidget(this)) {
    setObjectName(QStringLiteral("setupwindow"));
    setAutoFillBackground(true);
    bound_.afterInput = [this] { sync(); };
    indicator_config::SetupPane& pane = form_.indicatorSetup().pane();

    title_->setObjectName(QStringLiteral("setupTitle"));
    table_->setObjectName(QStringLiteral("setupValues"));
    table_->setAccessibleName(QStringLiteral("Values read from the scale"));
    table_->setColumnCount(columnCount);
    table_->setHorizontalHeaderLabels({QStringLiteral("Word"), QStringLiteral("Group value"),
                                       QStringLiteral("Output word"), QStringLiteral("Total")});
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setToolTip(QStringLiteral("The group values can be edited before they are sent."));
    connect(table_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (item->column() != groupColumn) {
            return;
        }
        const int row = item->row();
        const QString text = item->text();
        form_.runEvent([this, row, text] { form_.indicatorSetup().editGroupValue(row, text); });
        sync();
    });

    groupFrame_.caption = QStringLiteral("Group Setup");
    outputFrame_.caption = QStringLiteral("Output Configuration");
    totalsFrame_.caption = QStringLiteral("Totals");
    QGroupBox* group = bound_.frame(groupFrame_, {5640, 0, 2300, 2950}, "groupSetup");
    bound_.button(pane.btn_grp_download, group, nthButton(0), "btn_grp_download");
    bound_.button(pane.btn_grp_upload, group, nthButton(1), "btn_grp_upload");
    bound_.button(pane.btn_grp_uploadall, group, nthButton(2), "btn_grp_uploadall");
    bound_.button(pane.btn_grp_loaddb, group, nthButton(3), "btn_grp_loaddb");
    bound_.button(pane.btn_grp_savedb, group, nthButton(4), "btn_grp_savedb");
    bound_.button(pane.btn_grp_loaddefaults, group, nthButton(5), "btn_grp_loaddefaults");
    bound_.button(pane.btn_grp_savedefaults, group, nthButton(6), "btn_grp_savedefaults");

    QGroupBox* output = bound_.frame(outputFrame_, {8040, 0, 2300, 2200}, "outputConfiguration");
    bound_.button(pane.btn_oc_download, output, nthButton(0), "btn_oc_download");
    bound_.button(pane.btn_oc_upload, output, nthButton(1), "btn_oc_upload");
    bound_.button(pane.btn_oc_uploadall, output, nthButton(2), "btn_oc_uploadall");
    bound_.button(pane.btn_oc_loaddefaults, output, nthButton(3), "btn_oc_loaddefaults");
    bound_.button(pane.btn_oc_savedefaults, output, nthButton(4), "btn_oc_savedefaults");

    QGroupBox* totals = bound_.frame(totalsFrame_, {10440, 0, 1800, 1080}, "totals");
    bound_.button(pane.btn_totals_read, totals, {120, 240, 1560, 345}, "btn_totals_read");
    bound_.button(pane.btn_totals_reset, totals, {120, 615, 1560, 345}, "btn_totals_reset");
    bound_.label(pane.busyLabel, this, {10440, 1200, 1800, 300}, "busyLabel");
    setScale(pixelsPerTwip(this));
}

void SetupWindowView::setScale(double scale) {
    bound_.setScale(scale);
    title_->setGeometry(toPixels({120, 60, 5400, 300}, scale));
    QFont titleFont = font();
    titleFont.setPixelSize(std::max(1, toPixels(200, scale)));
    titleFont.setBold(true);
    title_->setFont(titleFont);
    table_->setGeometry(toPixels({120, 390, 5400, 2520}, scale));
    QFont tableFont = font();
    tableFont.setPixelSize(std::max(1, toPixels(fontTwips, scale)));
    table_->setFont(tableFont);
    table_->horizontalHeader()->setFont(tableFont);
    table_->verticalHeader()->setDefaultSectionSize(toPixels(rowTwips, scale));
    table_->horizontalHeader()->setFixedHeight(toPixels(rowTwips, scale));
    table_->setColumnWidth(wordColumn, toPixels(600, scale));
    table_->setColumnWidth(groupColumn, toPixels(1500, scale));
    table_->setColumnWidth(outputColumn, toPixels(1500, scale));
}

void SetupWindowView::fillTable() {
    const indicator_config::IndicatorSetup& setup = form_.indicatorSetup();
    const auto& group = setup.groupValues();
    const QStringList& output = setup.outputItems();
    const QStringList& totals = setup.totalsWords();
    const int rows = std::max({static_cast<int>(group.size()), static_cast<int>(output.size()),
                               static_cast<int>(totals.size())});
    const QSignalBlocker block(table_);
    if (table_->rowCount() != rows) {
        table_->setRowCount(rows);
    }
    // The cell the operator is typing in keeps what is typed.
    const QWidget* focus = QApplication::focusWidget();
    const bool editing = focus != nullptr && table_->viewport()->isAncestorOf(focus);
    for (int r = 0; r < rows; ++r) {
        setCell(table_, r, wordColumn, QString::number(r), false);
        const bool groupRow = r < static_cast<int>(group.size());
        if (!(editing && groupRow && table_->currentRow() == r)) {
            setCell(table_, r, groupColumn, groupRow ? group.at(static_cast<std::size_t>(r)) : "",
                    groupRow);
        }
        setCell(table_, r, outputColumn, output.value(r), false);
        setCell(table_, r, totalsColumn, totals.value(r), false);
    }
}

void SetupWindowView::sync() {
    const indicator_config::SetupPane& pane = form_.indicatorSetup().pane();
    title_->setText(pane.frame.caption);
    bound_.sync();
    fillTable();
}

} // namespace stellwyn::display
