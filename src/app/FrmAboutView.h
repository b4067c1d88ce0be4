#pragma once

#include <QDialog>

namespace stellwyn::core {
class Dialogs;
}

namespace stellwyn::app {

// "About": the version, whom to contact, the disclaimer, and a way to the system's own
// information tool.
class FrmAboutView : public QDialog {
    Q_OBJECT
public:
    FrmAboutView(core::Dialogs& dialogs, QWidget* parent = nullptr);

    static QString versionText();

    // Starts the system information tool; false when none could be started.
    static bool startSystemInfo();
};

} // namespace stellwyn::app
