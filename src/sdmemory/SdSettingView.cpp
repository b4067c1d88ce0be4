#include "SdSettingView.h"

#include "SdSetting.h"
#include "core/FatalError.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace stellwyn::sdmemory {

SdSettingView::SdSettingView(SdSetting& logic, QWidget* parent) : QDialog(parent), logic_(logic) {
    setWindowTitle(QStringLiteral("Drive Setup"));
    auto* group = new QGroupBox(logic.SD_Group.caption, this);
    group->setObjectName(QStringLiteral("SD_Group"));
    auto* drives = new QComboBox(group);
    drives->setObjectName(QStringLiteral("Drive1"));
    drives->setAccessibleName(QStringLiteral("Drive"));
    auto* folder = new QPushButton(QStringLiteral("Folder..."), group);
    folder->setObjectName(QStringLiteral("Drive1_Folder"));
    folder->setAutoDefault(false);
    auto* driveRow = new QHBoxLayout;
    driveRow->addWidget(drives, 1);
    driveRow->addWidget(folder);

    auto* form = new QFormLayout(group);
    form->addRow(driveRow);
    struct Field {
        const char* name;
        core::TextBox* box;
        QString label;
    };
    const Field fields[] = {
        {"txt_Time_Zone", &logic.txt_Time_Zone, QStringLiteral("System Time Zone:")},
        {"txt_Vol_Label", &logic.txt_Vol_Label, QStringLiteral("Volume Label:")},
        {"txt_Vol_Serial_Num", &logic.txt_Vol_Serial_Num, QStringLiteral("Volume Serial Number:")},
        {"txt_Tot_Space", &logic.txt_Tot_Space, QStringLiteral("Total Space:")},
        {"txt_Total_Free_Space", &logic.txt_Total_Free_Space, QStringLiteral("Total Free Space:")},
        {"txt_Avl_Free_Space", &logic.txt_Avl_Free_Space, QStringLiteral("Available Free Space:")},
        {"txt_Max_FileName_Len", &logic.txt_Max_FileName_Len,
         QStringLiteral("Maximum Filename Length:")},
        {"txt_File_Sys_Name", &logic.txt_File_Sys_Name, QStringLiteral("File System Name:")},
        {"txt_Drive_Type", &logic.txt_Drive_Type, QStringLiteral("Drive Type:")},
        {"txt_Volume_Comp", &logic.txt_Volume_Comp, QStringLiteral("Volume Compressed:")},
    };
    QList<std::pair<QLineEdit*, core::TextBox*>> edits;
    for (const Field& field : fields) {
        auto* edit = new QLineEdit(group);
        edit->setObjectName(QString::fromLatin1(field.name));
        edit->setReadOnly(true);
        edit->setAccessibleName(field.label);
        form->addRow(field.label, edit);
        edits << std::pair{edit, field.box};
    }

    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmd_OK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmd_Cancel"));
    cancel->setAutoDefault(false);
    auto* closing = new QHBoxLayout;
    closing->addStretch();
    closing->addWidget(ok);
    closing->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addLayout(closing);

    const auto sync = [=, &logic] {
        const QSignalBlocker block(drives);
        drives->clear();
        drives->addItems(logic.Drive1.items);
        drives->setCurrentIndex(logic.Drive1.listIndex);
        for (const auto& [edit, box] : edits) {
            edit->setText(box->text);
            edit->setEnabled(box->enabled);
        }
    };
    sync();
    connect(&logic, &SdSetting::changed, this, sync);
    connect(&logic, &SdSetting::unloadRequested, this, &QDialog::accept);
    connect(drives, &QComboBox::currentIndexChanged, this,
            [&logic](int index) { core::runHandler([&] { logic.Drive1_Change(index); }); });
    connect(folder, &QPushButton::clicked, this, [this, &logic] {
        const QString path = QFileDialog::getExistingDirectory(
            this, QStringLiteral("Folder that holds KL.Dat"), logic.Drive1.Drive());
        if (!path.isEmpty()) {
            core::runHandler([&] { logic.Drive1_Change(-1, path); });
        }
    });
    connect(ok, &QPushButton::clicked, &logic,
            [&logic] { core::runHandler([&] { logic.cmd_OK_Click(); }); });
    connect(cancel, &QPushButton::clicked, &logic,
            [&logic] { core::runHandler([&] { logic.cmd_Cancel_Click(); }); });
}

void SdSettingView::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    core::runHandler([this] { logic_.Form_Paint(); });
}

void SdSettingView::reject() {
    core::runHandler([this] { logic_.cmd_Cancel_Click(); });
}

} // namespace stellwyn::sdmemory
