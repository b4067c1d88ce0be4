#pragma once

namespace stellwyn::core {
class AppHome;
class Dialogs;
} // namespace stellwyn::core

namespace stellwyn::indicator_config {
class CapturingDialogs;
}

namespace stellwyn::display {

class Form1;

// Lets other programs drive the indicator setup transfers of this screen through the home's
// command socket, as they once could only while the screen was loaded. The server is a child
// of the form and goes with it. `capturing` must be (or wrap) `dialogs`, so that a command's
// client hears what the program said while it ran.
void serveCommands(Form1& form, const core::AppHome& home, core::Dialogs& dialogs,
                   indicator_config::CapturingDialogs& capturing);

} // namespace stellwyn::display
