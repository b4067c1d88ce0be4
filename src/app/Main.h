#pragma once

#include "core/InstanceLock.h"

#include <functional>
#include <memory>

namespace stellwyn::core {
class Module1;
class Dialogs;
class AppHome;
class Getdatapath;
} // namespace stellwyn::core

namespace stellwyn::app {

// The start of the program, up to the frame on screen with the settings loaded. Nothing talks
// to a scale yet: the link comes up only when the operator activates the main screen.
class Main {
public:
    Main(core::Module1& m, core::Dialogs& dialogs, const core::AppHome& home);

    // The frame: created and loaded (its place restored), then shown.
    std::function<void()> loadFrame;
    std::function<void()> showFrame;
    // Shows the data path chooser modally; returns when it has closed.
    std::function<void(core::Getdatapath&)> showGetdatapath;
    // Copies syscfg into the shared state.
    std::function<void()> loadsettings;

    // Runs the start-up. False when the process must end at once (another instance runs).
    bool run();

private:
    void compact();
    void ensureCfgTxt();
    void chooseDataPathIfMissing();

    core::Module1& m_;
    core::Dialogs& dialogs_;
    const core::AppHome& home_;
    std::unique_ptr<core::InstanceLock> lock_;
};

} // namespace stellwyn::app
