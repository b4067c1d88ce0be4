#pragma once

#include "core/Controls.h"

#include <array>

namespace stellwyn::indicator_config {

// The state of the "Indicator Setup" pane of the main screen, without widgets: its title, the
// busy label, one button for each transfer, and the table of what was last read from or put on
// the screen. The view draws it; the transfers write it.
struct SetupPane {
    SetupPane();

    // The pane frame; its caption is the pane title the transfers set.
    core::Frame frame;
    core::Label busyLabel;

    // Group setup.
    core::CommandButton btn_grp_loaddefaults;
    core::CommandButton btn_grp_savedefaults;
    core::CommandButton btn_grp_download;
    core::CommandButton btn_grp_loaddb;
    core::CommandButton btn_grp_savedb;
    core::CommandButton btn_grp_upload;
    core::CommandButton btn_grp_uploadall;
    // Output configuration.
    core::CommandButton btn_oc_loaddefaults;
    core::CommandButton btn_oc_savedefaults;
    core::CommandButton btn_oc_download;
    core::CommandButton btn_oc_upload;
    core::CommandButton btn_oc_uploadall;
    // Totals.
    core::CommandButton btn_totals_read;
    core::CommandButton btn_totals_reset;

    // Every button, for the transfers that disable the pane while they run.
    std::array<core::CommandButton*, 14> buttons() {
        return {&btn_grp_loaddefaults, &btn_grp_savedefaults, &btn_grp_download,
                &btn_grp_loaddb,       &btn_grp_savedb,       &btn_grp_upload,
                &btn_grp_uploadall,    &btn_oc_loaddefaults,  &btn_oc_savedefaults,
                &btn_oc_download,      &btn_oc_upload,        &btn_oc_uploadall,
                &btn_totals_read,      &btn_totals_reset};
    }
    void setButtonsEnabled(bool enabled);
};

} // namespace stellwyn::indicator_config
