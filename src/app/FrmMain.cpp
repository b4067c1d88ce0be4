#include "FrmMain.h"

#include "core/Dialogs.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/Yield.h"

namespace stellwyn::app {

namespace {
const QString section = QStringLiteral("Settings");

int readPlace(const core::SettingsStore& settings, const QString& key, int defaultValue) {
    bool ok = false;
    const int value =
        settings.getSetting(section, key, QString::number(defaultValue)).trimmed().toInt(&ok);
    return ok ? value : defaultValue;
}
} // namespace

FrmMain::FrmMain(core::Module1& m, core::Dialogs& dialogs, core::SettingsStore& settings,
                 QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), settings_(settings) {}

QString FrmMain::caption() {
    return QStringLiteral("Stellwyn");
}
QString FrmMain::m_arsCaption() {
    return QStringLiteral("Activate Remote Screen");
}
QString FrmMain::mnu_setupsCaption() {
    return QStringLiteral("Scale Configurations");
}
QString FrmMain::mnuHelpAboutCaption() {
    return QStringLiteral("&About");
}
QString FrmMain::m_exitCaption() {
    return QStringLiteral("Exit");
}

QStringList FrmMain::toolbarButtons() {
    return {QStringLiteral("New"),       QStringLiteral("Open"), QStringLiteral("Save"),
            QStringLiteral("Print"),     QStringLiteral("Cut"),  QStringLiteral("Copy"),
            QStringLiteral("Paste"),     QStringLiteral("Bold"), QStringLiteral("Italic"),
            QStringLiteral("Underline"), QStringLiteral("Left"), QStringLiteral("Center"),
            QStringLiteral("Right")};
}

QString FrmMain::statusPanelText() {
    return QStringLiteral("Status");
}

QString FrmMain::setupRefusal() {
    return QStringLiteral("\r This form can not be loaded while the scale screen is activated.\r"
                          "Use the EXIT button on the scale screen to shut it down, then open the "
                          "\rcommunications screen to make your changes, save them and\r"
                          "then reload the scale screen to activate the changes");
}

void FrmMain::setPlace(int left, int top, int width, int height) {
    left_ = left;
    top_ = top;
    width_ = width;
    height_ = height;
}

void FrmMain::MDIForm_Load() {
    setPlace(readPlace(settings_, QStringLiteral("MainLeft"), 1000),
             readPlace(settings_, QStringLiteral("MainTop"), 1000),
             readPlace(settings_, QStringLiteral("MainWidth"), 6500),
             readPlace(settings_, QStringLiteral("MainHeight"), 6500));
}

void FrmMain::MDIForm_Unload(bool minimized) {
    if (minimized) {
        return;
    }
    settings_.saveSetting(section, QStringLiteral("MainLeft"), QString::number(left_));
    settings_.saveSetting(section, QStringLiteral("MainTop"), QString::number(top_));
    settings_.saveSetting(section, QStringLiteral("MainWidth"), QString::number(width_));
    settings_.saveSetting(section, QStringLiteral("MainHeight"), QString::number(height_));
}

void FrmMain::MDIForm_Terminate() {
    if (usb_close) {
        usb_close();
    }
}

void FrmMain::m_ars_Click() {
    emit activateRemoteScreen();
}

void FrmMain::mnu_setups_Click() {
    if (m_.formactive == core::vbFalse) {
        if (showSetupModal) {
            showSetupModal();
        }
        core::yieldToEvents();
        if (loadsettings) {
            loadsettings();
        }
    } else {
        dialogs_.message(setupRefusal());
    }
}

void FrmMain::mnuHelpAbout_Click() {
    emit showAbout();
}

void FrmMain::m_exit_Click() {
    if (usb_close) {
        usb_close();
    }
    if (endProcess) {
        endProcess();
    }
}

} // namespace stellwyn::app
