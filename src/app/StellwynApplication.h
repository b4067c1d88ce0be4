#pragma once

#include <QApplication>
#include <functional>

namespace stellwyn::app {

// The application object of the screen. An error that no routine trapped is caught where the
// event loop entered the program's handler (core::runHandler), never in Qt's event dispatch:
// its text is shown once through the fatal handler and the process ends with status 1.
class StellwynApplication : public QApplication {
public:
    StellwynApplication(int& argc, char** argv);

    void setFatalHandler(std::function<void(const QString&)> handler);

    // Shows the text through the handler and ends the process with status 1.
    [[noreturn]] void fatal(const QString& text);
};

} // namespace stellwyn::app
