#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

namespace stellwyn::core {
class Module1;
class Dialogs;
class SettingsStore;
} // namespace stellwyn::core

namespace stellwyn::app {

// The frame: its caption, four menu entries, the toolbar and status bar, and its place on the
// screen, kept in the settings store in twips.
class FrmMain : public QObject {
    Q_OBJECT
public:
    FrmMain(core::Module1& m, core::Dialogs& dialogs, core::SettingsStore& settings,
            QObject* parent = nullptr);

    static QString caption();
    static QString m_arsCaption();
    static QString mnu_setupsCaption();
    static QString mnuHelpAboutCaption();
    static QString m_exitCaption();
    static QStringList toolbarButtons();
    static QString statusPanelText();
    static QString setupRefusal();

    // Place in twips.
    int left() const { return left_; }
    int top() const { return top_; }
    int width() const { return width_; }
    int height() const { return height_; }
    void setPlace(int left, int top, int width, int height);

    void MDIForm_Load();
    // Keeps the place for the next start, unless the frame is minimized.
    void MDIForm_Unload(bool minimized);
    void MDIForm_Terminate();

    void m_ars_Click();
    void mnu_setups_Click();
    void mnuHelpAbout_Click();
    void m_exit_Click();
    // The toolbar's buttons have never had an effect.
    void tbToolBar_ButtonClick(int) {}

    // Hooks the composition root sets: what the menu opens and how the process ends.
    std::function<void()> showSetupModal;
    std::function<void()> loadsettings;
    std::function<void()> usb_close;
    std::function<void()> endProcess;

signals:
    // The main screen connects here: "Activate Remote Screen" was picked.
    void activateRemoteScreen();
    void showAbout();

private:
    core::Module1& m_;
    core::Dialogs& dialogs_;
    core::SettingsStore& settings_;
    int left_ = 1000;
    int top_ = 1000;
    int width_ = 6500;
    int height_ = 6500;
};

} // namespace stellwyn::app
