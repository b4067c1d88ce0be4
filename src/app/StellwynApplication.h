#pragma once

#include <QApplication>
#include <functional>

namespace stellwyn::app {

// The event dispatch of the whole program. An error that no routine trapped ends up here: its
// text is shown once through the fatal handler and the process ends with status 1.
class StellwynApplication : public QApplication {
public:
    StellwynApplication(int& argc, char** argv);

    void setFatalHandler(std::function<void(const QString&)> handler);
    bool notify(QObject* receiver, QEvent* event) override;

    // Shows the text through the handler and ends the process with status 1.
    [[noreturn]] void fatal(const QString& text);

private:
    std::function<void(const QString&)> fatalHandler_;
};

} // namespace stellwyn::app
