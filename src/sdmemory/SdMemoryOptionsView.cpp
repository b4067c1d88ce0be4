#include "SdMemoryOptionsView.h"

#include "SdMemoryOptions.h"
#include "core/FatalError.h"
#include "core/Yield.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>

namespace stellwyn::sdmemory {

SdMemoryOptionsView::SdMemoryOptionsView(SdMemoryOptions& logic, QGroupBox* group)
    : QObject(group), logic_(logic), group_(group) {
    auto* form = new QFormLayout;
    auto* drive = new QLineEdit(group);
    drive->setObjectName(QStringLiteral("txt_Default_SD_Drive"));
    drive->setReadOnly(true);
    drive->setAccessibleName(logic.lbl_Default_SD_Drive.caption);
    auto* zone = new QLineEdit(group);
    zone->setObjectName(QStringLiteral("txt_Default_Time_Zone"));
    zone->setReadOnly(true);
    zone->setAccessibleName(logic.lbl_time_zone.caption);
    form->addRow(logic.lbl_Default_SD_Drive.caption, drive);
    form->addRow(logic.lbl_time_zone.caption, zone);

    const auto button = [group](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption, group);
        b->setObjectName(QString::fromLatin1(name));
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* read = button("Read_Dat_File", logic.Read_Dat_File.caption);
    QPushButton* erase = button("Erase_Dat_File", logic.Erase_Dat_File.caption);
    QPushButton* setup = button("cmd_Setup", logic.cmd_Setup.caption);
    auto* eraseAfter = new QCheckBox(logic.chk_erase_after_read.caption, group);
    eraseAfter->setObjectName(QStringLiteral("chk_erase_after_read"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(read);
    buttons->addWidget(erase);
    buttons->addWidget(setup);
    auto* layout = group->layout();
    auto* box = qobject_cast<QBoxLayout*>(layout);
    box->addLayout(form);
    box->addWidget(eraseAfter);
    box->addLayout(buttons);
    box->addStretch();
    group->setEnabled(true);

    const auto sync = [=, &logic] {
        drive->setText(logic.txt_Default_SD_Drive.text);
        drive->setEnabled(logic.txt_Default_SD_Drive.enabled);
        zone->setText(logic.txt_Default_Time_Zone.text);
        zone->setEnabled(logic.txt_Default_Time_Zone.enabled);
        eraseAfter->setChecked(logic.chk_erase_after_read.value() != 0);
    };
    sync();
    connect(&logic, &SdMemoryOptions::changed, this, sync);
    connect(eraseAfter, &QCheckBox::toggled, this, [&logic](bool on) {
        core::runHandler([&] { logic.chk_erase_after_read.setValue(on ? 1 : 0); });
    });
    connect(read, &QPushButton::clicked, &logic,
            [&logic] { core::runHandler([&] { logic.Read_Dat_File_Click(); }); });
    connect(erase, &QPushButton::clicked, &logic,
            [&logic] { core::runHandler([&] { logic.Erase_Dat_File_Click(); }); });
    connect(setup, &QPushButton::clicked, &logic,
            [&logic] { core::runHandler([&] { logic.cmd_Setup_Click(); }); });

    logic.progress = [this](qint64 done, qint64 total) { return showProgress(done, total); };
    logic.progressDone = [this] {
        if (progress_ != nullptr) {
            delete progress_;
            progress_ = nullptr;
            group_->window()->setEnabled(true);
        }
    };
}

bool SdMemoryOptionsView::showProgress(qint64 done, qint64 total) {
    if (progress_ == nullptr) {
        // While a long file is read the screen takes no input; only the progress's Cancel does.
        group_->window()->setEnabled(false);
        progress_ = new QProgressDialog(QStringLiteral("Reading KL.Dat..."),
                                        QStringLiteral("Cancel"), 0, 1000);
        progress_->setWindowTitle(QStringLiteral("KL.Dat"));
        // Shown only when the file takes more than a moment.
        progress_->setMinimumDuration(400);
        progress_->setAutoClose(false);
        progress_->setAutoReset(false);
    }
    progress_->setValue(total > 0 ? static_cast<int>(done * 1000 / total) : 0);
    // The Cancel button is seen only at a yield.
    core::yieldToEvents();
    return !progress_->wasCanceled();
}

} // namespace stellwyn::sdmemory
