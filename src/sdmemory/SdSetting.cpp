#include "SdSetting.h"

#include "SdCard.h"
#include "core/Dialogs.h"
#include "core/Module1.h"

#include <QDir>

namespace stellwyn::sdmemory {

namespace {

// A path as the list spells its entries: one separator between names and one at the end. The
// path in use carries the separator OK appended, and a picked folder may carry none; both must
// land on the folder's own entry, or every OK would add a separator and a new entry.
QString entryOf(const QString& path) {
    QString entry = QDir::cleanPath(path);
    if (!entry.endsWith(QDir::separator())) {
        entry += QDir::separator();
    }
    return entry;
}

// The list's entry for `path`, added at the end when the list has none.
int entryIndex(QStringList& items, const QString& path) {
    const QString entry = entryOf(path);
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (entryOf(items.at(i)) == entry) {
            return static_cast<int>(i);
        }
    }
    items << entry;
    return static_cast<int>(items.size() - 1);
}

} // namespace

SdSetting::SdSetting(core::Module1& m, core::Dialogs& dialogs, DriveQueries& queries,
                     QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), queries_(queries) {
    SD_Group.caption = QStringLiteral("SD Memory Drive Setting");
    for (core::TextBox* box : {&txt_Time_Zone, &txt_Vol_Label, &txt_Vol_Serial_Num, &txt_Tot_Space,
                               &txt_Total_Free_Space, &txt_Avl_Free_Space, &txt_Max_FileName_Len,
                               &txt_File_Sys_Name, &txt_Drive_Type, &txt_Volume_Comp}) {
        box->enabled = false;
    }
}

void SdSetting::Form_Load() {
    drive_ = std::make_unique<CDriveInfo>(queries_);
    showTimeZone();
    Drive1.items = queries_.roots();
    // The list starts on the drive of the path in use, as a drive list opens on its drive.
    Drive1.listIndex = Drive1.items.isEmpty() ? -1 : 0;
    if (!m_.sddrivepath.isEmpty()) {
        Drive1.listIndex = entryIndex(Drive1.items, m_.sddrivepath);
    }
    if (m_.sddrivechosen != 1) {
        for (int i = 0; i < Drive1.items.size(); ++i) {
            drive_->setDrive(Drive1.items.at(i));
            if (isSdCard(*drive_)) {
                dialogs_.message(QStringLiteral("Program Found Drive '") + drive_->Drive() +
                                 QStringLiteral("'  [") + drive_->DriveTypeEx() +
                                 QStringLiteral("] as Default SD Drive"));
                Drive1.listIndex = i;
                m_.sddrivepath = Drive1.items.at(i);
            }
        }
    } else {
        dialogs_.message(QStringLiteral("User Setted '") + m_.sddrivepath +
                         QStringLiteral("'as Default SD Drive"));
    }
    // The fields describe the entry the list shows, not the last drive the search looked at.
    if (Drive1.listIndex >= 0) {
        drive_->setDrive(Drive1.Drive());
    }
    fillFields();
    emit changed();
}

void SdSetting::Form_Paint() {
    showTimeZone();
    emit changed();
}

void SdSetting::showTimeZone() {
    if (const std::optional<QString> shown = shownTimeZone(queries_.timeZoneInformation())) {
        txt_Time_Zone.text = *shown;
    }
}

void SdSetting::fillFields() {
    showTimeZone();
    if (drive_->Present()) {
        txt_Vol_Label.text = drive_->Label();
        txt_Vol_Serial_Num.text = drive_->SerialNumberEx();
        txt_Tot_Space.text = CDriveInfo::FormatSize(drive_->TotalSpace(), true);
        txt_Total_Free_Space.text = CDriveInfo::FormatSize(drive_->FreeSpace(), true);
        txt_Avl_Free_Space.text = CDriveInfo::FormatSize(drive_->AvailableSpace(), true);
        txt_Max_FileName_Len.text = QString::number(drive_->MaxFilenameLength());
        txt_File_Sys_Name.text = drive_->FileSystem();
        txt_Drive_Type.text = drive_->DriveTypeEx();
        // The flag word's test needs every bit of the argument, high bits included.
        txt_Volume_Comp.text =
            drive_->FileSystemFlag(-32768) ? QStringLiteral("True") : QStringLiteral("False");
        return;
    }
    for (core::TextBox* box :
         {&txt_Vol_Label, &txt_Vol_Serial_Num, &txt_Tot_Space, &txt_Total_Free_Space,
          &txt_Avl_Free_Space, &txt_Max_FileName_Len, &txt_File_Sys_Name, &txt_Volume_Comp}) {
        box->text.clear();
    }
    txt_Drive_Type.text = drive_->DriveTypeEx();
    switch (drive_->DriveType()) {
    case driveNoRootDir:
        txt_Vol_Label.text = QStringLiteral("[Drive Not Mapped]");
        break;
    case driveRemovable:
        txt_Vol_Label.text = QStringLiteral("[Disk Not Present]");
        break;
    case driveCdrom:
        txt_Vol_Label.text = QStringLiteral("[Disc Not Present]");
        break;
    default:
        break;
    }
}

void SdSetting::Drive1_Change(int index, const QString& folder) {
    if (index < 0) {
        index = entryIndex(Drive1.items, folder);
    }
    Drive1.listIndex = index;
    dialogs_.setBusy(true);
    drive_->setDrive(Drive1.Drive());
    fillFields();
    dialogs_.setBusy(false);
    emit changed();
}

void SdSetting::cmd_OK_Click() {
    if (Drive1.Drive() != m_.sddrivepath) {
        m_.sddrivechosen = 1;
    }
    m_.sddrivepath = Drive1.Drive() + QDir::separator();
    emit unloadRequested();
}

void SdSetting::cmd_Cancel_Click() {
    emit unloadRequested();
}

} // namespace stellwyn::sdmemory
