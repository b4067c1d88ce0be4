#include "GetdatapathView.h"

#include "FatalError.h"
#include "Getdatapath.h"

#include <QComboBox>
#include <QFileSystemModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace stellwyn::core {

GetdatapathView::GetdatapathView(Getdatapath& logic, QWidget* parent)
    : QDialog(parent), logic_(logic), drive1_(new QComboBox(this)), dir1_(new QTreeView(this)),
      model_(new QFileSystemModel(this)), label1_(new QLabel(this)) {
    setWindowTitle(Getdatapath::caption());
    setModal(true);

    auto* label2 = new QLabel(Getdatapath::label2Caption(), this);
    label2->setWordWrap(true);

    drive1_->addItems(logic_.drives());

    model_->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    model_->setRootPath(QStringLiteral("/"));
    dir1_->setModel(model_);
    for (int column = 1; column < model_->columnCount(); ++column) {
        dir1_->hideColumn(column);
    }
    dir1_->header()->hide();

    label1_->setFrameShape(QFrame::StyledPanel);
    label1_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* okay = new QPushButton(Getdatapath::command1Caption(), this);
    auto* cancel = new QPushButton(Getdatapath::command2Caption(), this);
    okay->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(okay);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label2);
    layout->addWidget(drive1_);
    layout->addWidget(dir1_, 1);
    layout->addWidget(label1_);
    layout->addLayout(buttons);
    resize(420, 420);

    connect(drive1_, &QComboBox::textActivated, this,
            [this](const QString& drive) { runHandler([&] { logic_.Drive1_Change(drive); }); });
    connect(dir1_, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        runHandler([&] { logic_.Dir1_Change(model_->filePath(index)); });
    });
    connect(&logic_, &Getdatapath::dirChanged, this, &GetdatapathView::showFolder);
    connect(okay, &QPushButton::clicked, this,
            [this] { runHandler([this] { logic_.Command1_Click(); }); });
    connect(cancel, &QPushButton::clicked, this,
            [this] { runHandler([this] { logic_.Command2_Click(); }); });
    connect(&logic_, &Getdatapath::unloadRequested, this, &QDialog::accept);

    showFolder(logic_.dir());
}

void GetdatapathView::showFolder(const QString& folder) {
    label1_->setText(folder);
    const QModelIndex index = model_->index(folder);
    if (index.isValid()) {
        dir1_->setCurrentIndex(index);
        dir1_->scrollTo(index);
    }
}

// Closing the window asks, as the Cancel button does.
void GetdatapathView::reject() {
    logic_.Command2_Click();
}

} // namespace stellwyn::core
