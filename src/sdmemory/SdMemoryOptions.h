#pragma once

#include "KlDatImport.h"
#include "core/Controls.h"

#include <QObject>
#include <functional>

namespace stellwyn::core {
class Dialogs;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::sdmemory {

class DriveQueries;

// The Setup screen's "SD Memory Options" group: its controls' state and its handlers.
class SdMemoryOptions : public QObject {
    Q_OBJECT
public:
    SdMemoryOptions(core::Module1& m, core::Dialogs& dialogs, DriveQueries& queries,
                    QObject* parent = nullptr);

    core::CommandButton Read_Dat_File;
    core::CommandButton Erase_Dat_File;
    core::CheckBox chk_erase_after_read;
    core::CommandButton cmd_Setup;
    core::TextBox txt_Default_SD_Drive;
    core::TextBox txt_Default_Time_Zone;
    core::Label lbl_Default_SD_Drive;
    core::Label lbl_time_zone;

    // Hooks the composition root sets: the drive settings screen, shown modally, and the
    // progress of a long read (return false to stop it) with its end.
    std::function<void()> showSdSetting;
    KlImportProgress progress;
    std::function<void()> progressDone;

    // Finds the time zone and the card while the Setup screen loads.
    void discover();

    void Read_Dat_File_Click();
    void Erase_Dat_File_Click();
    void cmd_Setup_Click();

signals:
    void changed();
    // Rows went into datacol.
    void readingsStored(int count);

private:
    QString klDatPath() const;
    void erase();

    core::Module1& m_;
    core::Dialogs& dialogs_;
    DriveQueries& queries_;
};

} // namespace stellwyn::sdmemory
