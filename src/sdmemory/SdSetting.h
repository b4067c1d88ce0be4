#pragma once

#include "CDriveInfo.h"
#include "core/Controls.h"

#include <QObject>
#include <QStringList>
#include <memory>

namespace stellwyn::core {
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::sdmemory {

// The drive list: one entry per mount point, its text the mount point with its trailing
// separator. A folder the operator picks to stand in for the card is added as an entry.
struct DriveList {
    QStringList items;
    int listIndex = -1;
    QString Drive() const { return listIndex >= 0 ? items.at(listIndex) : QString(); }
};

// SD_Setting, the "Drive Setup" screen: choose the card's drive, and see what it is.
class SdSetting : public QObject {
    Q_OBJECT
public:
    SdSetting(core::Module1& m, core::Dialogs& dialogs, DriveQueries& queries,
              QObject* parent = nullptr);

    core::Frame SD_Group;
    DriveList Drive1;
    core::TextBox txt_Time_Zone;
    core::TextBox txt_Vol_Label;
    core::TextBox txt_Vol_Serial_Num;
    core::TextBox txt_Tot_Space;
    core::TextBox txt_Total_Free_Space;
    core::TextBox txt_Avl_Free_Space;
    core::TextBox txt_Max_FileName_Len;
    core::TextBox txt_File_Sys_Name;
    core::TextBox txt_Drive_Type;
    core::TextBox txt_Volume_Comp;

    void Form_Load();
    void Form_Paint();
    // The operator chose entry `index`, or (index -1) a folder by its path.
    void Drive1_Change(int index, const QString& folder = {});
    void cmd_OK_Click();
    void cmd_Cancel_Click();

signals:
    void changed();
    void unloadRequested();

private:
    void showTimeZone();
    void fillFields();

    core::Module1& m_;
    core::Dialogs& dialogs_;
    DriveQueries& queries_;
    std::unique_ptr<CDriveInfo> drive_;
};

} // namespace stellwyn::sdmemory
