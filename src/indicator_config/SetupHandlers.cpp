// The handlers of the setup pane's buttons: each asks its question, then runs a transfer and
// says what failed.
#include "ConfigTexts.h"
#include "IndicatorSetup.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/ModeTimers.h"
#include "core/Dialogs.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "core/store/IndicatorConfigTables.h"

namespace stellwyn::indicator_config {

using core::yieldToEvents;

namespace {
const QString cr = QStringLiteral("\r");
const QString defaultValues = QStringLiteral("Default Values");

QStringList listed(const std::array<QString, IndicatorSetup::groupValueCount>& values) {
    return QStringList(values.begin(), values.end());
}
} // namespace

void IndicatorSetup::attach() {
    pane_.btn_grp_loaddefaults.Click = [this] { grp_loaddefaults_Click(); };
    pane_.btn_grp_savedefaults.Click = [this] { grp_savedefaults_Click(); };
    pane_.btn_grp_download.Click = [this] { grp_download_Click(); };
    pane_.btn_grp_loaddb.Click = [this] { grp_loaddb_Click(); };
    pane_.btn_grp_savedb.Click = [this] { grp_savedb_Click(); };
    pane_.btn_grp_upload.Click = [this] { grp_upload_Click(); };
    pane_.btn_grp_uploadall.Click = [this] { grp_uploadall_Click(); };
    pane_.btn_oc_loaddefaults.Click = [this] { oc_loaddefaults_Click(); };
    pane_.btn_oc_savedefaults.Click = [this] { oc_savedefaults_Click(); };
    pane_.btn_oc_download.Click = [this] { oc_download_Click(); };
    pane_.btn_oc_upload.Click = [this] { oc_upload_Click(); };
    pane_.btn_oc_uploadall.Click = [this] { oc_uploadall_Click(); };
    pane_.btn_totals_read.Click = [this] { totals_read_Click(); };
    pane_.btn_totals_reset.Click = [this] { reset_totals(); };
}

void IndicatorSetup::grp_loaddefaults_Click() {
    if (!dialogs_.question(QStringLiteral("Load Default Group Configuration"),
                           QStringLiteral("This action will load the default group configuration "
                                          "values that are stored in the database and display "
                                          "them on the screen. Proceed?"))) {
        return;
    }
    core::Connection connection = core::Connection::open(c_.m.dataconn);
    if (!core::hasFirstRow(connection, core::OneRecordTable::defaultgroups)) {
        dialogs_.message(texts::noDefaultRecord());
        return;
    }
    const QStringList values =
        core::firstRowValues(connection, core::OneRecordTable::defaultgroups);
    for (int i = 0; i < groupValueCount; ++i) {
        const QString& v = values.value(i);
        groupValues_.at(static_cast<std::size_t>(i)) = v.isEmpty() ? v : groupFrameValue(v);
    }
    pane_.frame.caption = texts::groupSetupTitle() + defaultValues;
}

void IndicatorSetup::grp_savedefaults_Click() {
    if (!dialogs_.question(QStringLiteral("Save Default Group Configuration"),
                           texts::questionProceed())) {
        return;
    }
    core::Connection connection = core::Connection::open(c_.m.dataconn);
    core::Transaction transaction(connection);
    core::ensureFirstRow(connection, core::OneRecordTable::defaultgroups);
    core::setFirstRowValues(connection, core::OneRecordTable::defaultgroups, listed(groupValues_));
    transaction.commit();
}

void IndicatorSetup::grp_download_Click() {
    if (!dialogs_.question(QStringLiteral("Download From Scale Indicator"),
                           QStringLiteral("Download group setup data from the scale indicator ") +
                               combo1Text() + QStringLiteral(" to the on-screen fields?"))) {
        return;
    }
    std::int32_t id = c_.m.curnetid;
    if (load_screen_from_scale(id) == 1) {
        dialogs_.message(texts::notSuccessful());
    }
}

void IndicatorSetup::grp_loaddb_Click() {
    const QString name = combo1Text();
    if (!dialogs_.question(QStringLiteral("Load from Database"),
                           QStringLiteral("Load the stored group configuration for ") + name +
                               QStringLiteral(" from the database?"))) {
        return;
    }
    const std::int16_t result = load_screen_from_db(name);
    if (result == 1) {
        dialogs_.message(
            QStringLiteral("There are no group configuration records saved in the database."));
    } else if (result == 2) {
        dialogs_.message(
            QStringLiteral("Can not find a group configuration record for scale ID# ") + name +
            QStringLiteral(" in the database."));
    }
}

void IndicatorSetup::grp_savedb_Click() {
    const QString name = combo1Text();
    if (!dialogs_.question(QStringLiteral("Save to Database"),
                           QStringLiteral("Save the on-screen values to the database record for ") +
                               name + QStringLiteral("?"))) {
        return;
    }
    if (save_screen_to_db(name) == 1) {
        dialogs_.message(QStringLiteral("Operation not Successful"));
    }
}

void IndicatorSetup::grp_upload_Click() {
    if (!dialogs_.question(QStringLiteral("Upload Group Setup to Scale"),
                           QStringLiteral("This action will upload the displayed group ") + cr +
                               QStringLiteral("setup to scale: ") + combo1Text() + cr +
                               QStringLiteral(" Select YES to continue, or NO to cancel"))) {
        return;
    }
    std::int32_t id = c_.m.curnetid;
    if (save_screen_to_scale(id) == 1) {
        dialogs_.message(texts::notSuccessful());
    }
}

void IndicatorSetup::grp_uploadall_Click() {
    if (!dialogs_.question(QStringLiteral("Upload to All Scales"),
                           QStringLiteral("This will upload the displayed group setup data to all "
                                          "scales currently connected to the network. "
                                          "Continue?"))) {
        return;
    }
    for (int i = 0; i < c_.f.Combo1.items().size(); ++i) {
        std::int32_t id = c_.m.netid[i];
        save_screen_to_scale(id);
    }
    busy(false);
    yieldToEvents();
}

void IndicatorSetup::oc_loaddefaults_Click() {
    if (!dialogs_.question(QStringLiteral("Load Default Output Configuration"),
                           QStringLiteral("This action will load the default output configuration "
                                          "values that are stored in the database and display "
                                          "them on the screen. Proceed?"))) {
        return;
    }
    core::Connection connection = core::Connection::open(c_.m.cfgconn);
    if (!core::hasFirstRow(connection, core::OneRecordTable::defaultoutputs)) {
        dialogs_.message(texts::noDefaultRecord());
        return;
    }
    outputItems_ = core::firstRowValues(connection, core::OneRecordTable::defaultoutputs);
    pane_.frame.caption = texts::outputConfigurationTitle() + defaultValues;
}

void IndicatorSetup::oc_savedefaults_Click() {
    if (!dialogs_.question(QStringLiteral("Save Default Output Configuration"),
                           texts::questionProceed())) {
        return;
    }
    core::Connection connection = core::Connection::open(c_.m.cfgconn);
    core::Transaction transaction(connection);
    core::ensureFirstRow(connection, core::OneRecordTable::defaultoutputs);
    core::setFirstRowValues(connection, core::OneRecordTable::defaultoutputs, outputItems_);
    transaction.commit();
}

void IndicatorSetup::oc_download_Click() {
    if (!dialogs_.question(QStringLiteral("Download Output Configuration"),
                           QStringLiteral("Download Output Configuration Setup from the scale "
                                          "indicator ") +
                               combo1Text() + QStringLiteral(" to the on-screen fields?"))) {
        return;
    }
    std::int32_t id = selectedNetId();
    move_scale_to_ocscreen(id);
}

void IndicatorSetup::oc_upload_Click() {
    const QString uploadOutput = QStringLiteral("This action will upload the displayed output ");
    if (!dialogs_.question(QStringLiteral("Upload Output Configuration to Scale"),
                           uploadOutput + cr + QStringLiteral("configuration to scale: ") +
                               combo1Text() + cr +
                               QStringLiteral(" Select YES to continue, or NO "
                                              "to cancel"))) {
        return;
    }
    busy(true);
    yieldToEvents();
    pane_.setButtonsEnabled(false);
    yieldToEvents();
    std::int32_t id = selectedNetId();
    upload_oc(id);
    pane_.frame.caption = texts::outputConfigurationTitle() + combo1Text();
    busy(false);
    pane_.setButtonsEnabled(true);
}

void IndicatorSetup::oc_uploadall_Click() {
    if (!dialogs_.question(QStringLiteral("Upload Output Configuration to All Scales"),
                           QStringLiteral("This action will upload the displayed output ") + cr +
                               QStringLiteral("configuration to all scales on the network.") + cr +
                               QStringLiteral(" Select YES to continue, or NO to cancel"))) {
        return;
    }
    busy(true);
    yieldToEvents();
    pane_.setButtonsEnabled(false);
    for (int i = 0; i < c_.f.Combo1.items().size(); ++i) {
        std::int32_t id = c_.m.netid[i];
        upload_oc(id);
    }
    pane_.frame.caption = texts::outputConfigurationTitle() + QStringLiteral("All Scales");
    busy(false);
    pane_.setButtonsEnabled(true);
    yieldToEvents();
}

void IndicatorSetup::totals_read_Click() {
    read_totals();
}

void IndicatorSetup::reset_totals() {
    if (!dialogs_.question(QStringLiteral("Reset Scale Totals"),
                           QStringLiteral("This action will reset the totals in scale") + cr +
                               combo1Text() + QStringLiteral("  ") + cr + cr +
                               QStringLiteral(" Select YES to reset totals, or NO to cancel"))) {
        return;
    }
    clearTotals(c_.m.curnetid);
    read_totals();
    pane_.setButtonsEnabled(true);
    pane_.busyLabel.visible = false;
    yieldToEvents();
    timers_.net_stat_put();
    yieldToEvents();
}

} // namespace stellwyn::indicator_config
