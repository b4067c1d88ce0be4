#pragma once

#include "app/Main.h"
#include "core/AppHome.h"
#include "core/Clock.h"
#include "core/Dialogs.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "indicator_config/CapturingDialogs.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>

namespace stellwyn::display {
class Form1;
}
namespace stellwyn::links {
class FtdiApi;
class UsbLink;
} // namespace stellwyn::links

namespace stellwyn::collector {

class ServiceNotifier;

// The main screen with nobody in front of it: the same start-up and the same Form1, activated
// on the link of the settings and set as an operator would have left it. What the screen would
// show goes to the log, one line each: messages, the link, the mode, each stored reading.
class Collector : public QObject {
    Q_OBJECT
public:
    Collector(const core::AppHome& home, ServiceNotifier& notifier, QObject* parent = nullptr);
    ~Collector() override;

    // The start-up, then the activation. Ends with finished() when there is nothing to run.
    void start();
    // Settings read again: the screen is closed as its exit button would, and opened afresh.
    void reload();
    // The screen closed as its exit button would; finished(0) once its last handler is over.
    void stop();

    // The link and today's readings in one line, as the screen's status bar has them.
    QString statusLine();

signals:
    void finished(int status);

private:
    enum class Next { nothing, activate, quit };

    void activate();
    void applySettings();
    void closeForm(Next next);
    void destroyWhenIdle();
    void watchCaption();
    void finish(int status);

    const core::AppHome& home_;
    ServiceNotifier& notifier_;
    core::Module1 m_;
    core::RealClock clock_;
    // A question nobody can answer is answered No, as unattended runs of the screen do.
    indicator_config::CapturingDialogs dialogs_{std::make_unique<core::UnattendedDialogs>(false)};
    // Made afresh for each activation, so that a reload reads the file again.
    std::unique_ptr<core::SettingsStore> settings_;
    app::Main main_;
    std::unique_ptr<links::FtdiApi> ftdi_;
    std::unique_ptr<links::UsbLink> usb_;
    std::unique_ptr<display::Form1> form_;
    Next next_ = Next::nothing;
    bool started_ = false;
    bool stopping_ = false;
    int finishStatus_ = 0;
    QString caption_;
    QTimer captionWatch_;
    QTimer statusTimer_;
};

} // namespace stellwyn::collector
