#include "SetupPane.h"

#include "ConfigTexts.h"

namespace stellwyn::indicator_config {

SetupPane::SetupPane() {
    frame.caption = texts::paneTitle();
    busyLabel.caption = QStringLiteral("Working with the scale...");
    busyLabel.visible = false;
    btn_grp_loaddefaults.caption = QStringLiteral("Load Defaults");
    btn_grp_savedefaults.caption = QStringLiteral("Save as Defaults");
    btn_grp_download.caption = QStringLiteral("Read from Scale");
    btn_grp_loaddb.caption = QStringLiteral("Load Stored");
    btn_grp_savedb.caption = QStringLiteral("Store");
    btn_grp_upload.caption = QStringLiteral("Send to Scale");
    btn_grp_uploadall.caption = QStringLiteral("Send to All");
    btn_oc_loaddefaults.caption = btn_grp_loaddefaults.caption;
    btn_oc_savedefaults.caption = btn_grp_savedefaults.caption;
    btn_oc_download.caption = btn_grp_download.caption;
    btn_oc_upload.caption = btn_grp_upload.caption;
    btn_oc_uploadall.caption = btn_grp_uploadall.caption;
    btn_totals_read.caption = QStringLiteral("Read Totals");
    btn_totals_reset.caption = QStringLiteral("Reset Totals");
}

void SetupPane::setButtonsEnabled(bool enabled) {
    for (core::CommandButton* button : buttons()) {
        button->enabled = enabled;
    }
}

} // namespace stellwyn::indicator_config
