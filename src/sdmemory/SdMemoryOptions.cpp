#include "SdMemoryOptions.h"

#include "CDriveInfo.h"
#include "SdCard.h"
#include "SdMemoryLog.h"
#include "core/Dialogs.h"
#include "core/Module1.h"

namespace stellwyn::sdmemory {

SdMemoryOptions::SdMemoryOptions(core::Module1& m, core::Dialogs& dialogs, DriveQueries& queries,
                                 QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), queries_(queries) {
    Read_Dat_File.caption = QStringLiteral("Read Dat File");
    Erase_Dat_File.caption = QStringLiteral("Erase Dat File");
    chk_erase_after_read.caption = QStringLiteral("Erase After Read");
    chk_erase_after_read.setValue(1);
    cmd_Setup.caption = QStringLiteral("Drive Setup");
    txt_Default_SD_Drive.text = QStringLiteral("<No SD Drive>");
    txt_Default_SD_Drive.enabled = false;
    txt_Default_Time_Zone.text = QStringLiteral("<Null Time Zone>");
    txt_Default_Time_Zone.enabled = false;
    lbl_Default_SD_Drive.caption = QStringLiteral("Default SD Drive :");
    lbl_time_zone.caption = QStringLiteral("Default System Time Zone:");
}

void SdMemoryOptions::discover() {
    const TimeZoneInformation zone = queries_.timeZoneInformation();
    if (const std::optional<QString> shown = shownTimeZone(zone)) {
        txt_Default_Time_Zone.text = *shown;
        if (zone.state == timeZoneStandard) {
            m_.sdtimezone = *shown;
        }
    }
    // A drive chosen earlier in this run is known already; a card found now replaces it.
    if (!m_.sddrivepath.isEmpty()) {
        txt_Default_SD_Drive.text = m_.sddrivepath;
    }
    CDriveInfo drive(queries_);
    // Every card found is taken in turn, so the last one in the list stands.
    for (const QString& root : queries_.roots()) {
        drive.setDrive(root);
        if (isSdCard(drive)) {
            txt_Default_SD_Drive.text = root;
            m_.sddrivepath = root;
        }
    }
    emit changed();
}

QString SdMemoryOptions::klDatPath() const {
    // Joined as it stands: a drive path carries its own separator.
    return m_.sddrivepath + QStringLiteral("KL.Dat");
}

void SdMemoryOptions::Read_Dat_File_Click() {
    if (m_.sddrivepath.isEmpty()) {
        return;
    }
    const KlImportResult result = importKlDat(klDatPath(), m_, progress);
    if (progressDone) {
        progressDone();
    }
    if (result.stored > 0) {
        emit readingsStored(result.stored);
    }
    if (!result.error.isEmpty()) {
        qCWarning(sdmemoryLog) << "reading" << klDatPath() << "stopped after" << result.stored
                               << "rows:" << result.error;
        dialogs_.message(QStringLiteral("Error Reading File!"));
        return;
    }
    if (result.cancelled) {
        dialogs_.message(QStringLiteral("Reading stopped. The %1 rows read so far are kept, and "
                                        "KL.Dat is left as it was.")
                             .arg(result.stored));
        return;
    }
    if (chk_erase_after_read.value() != 0) {
        erase();
        dialogs_.message(QStringLiteral("Finished reading Data and Erased KL.Dat file"));
    } else {
        dialogs_.message(QStringLiteral("Finished reading Data"));
    }
    if (result.badLines > 0) {
        dialogs_.message(QStringLiteral("%1 lines of KL.Dat held bytes that are not text or were "
                                        "longer than 64 KiB; they were passed over.")
                             .arg(result.badLines));
    }
}

void SdMemoryOptions::Erase_Dat_File_Click() {
    erase();
}

void SdMemoryOptions::erase() {
    QString error;
    if (!eraseKlDat(klDatPath(), &error)) {
        qCWarning(sdmemoryLog) << "erasing" << klDatPath() << "failed:" << error;
        dialogs_.message(QStringLiteral("Error Erase File !"));
        return;
    }
    // With "Erase After Read" ticked, the read's message tells of the erase.
    if (chk_erase_after_read.value() == 0) {
        dialogs_.message(QStringLiteral("Finished Erase Data"));
    }
}

void SdMemoryOptions::cmd_Setup_Click() {
    if (showSdSetting) {
        showSdSetting();
    }
    txt_Default_SD_Drive.text = m_.sddrivepath;
    emit changed();
}

} // namespace stellwyn::sdmemory
