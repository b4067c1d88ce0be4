#pragma once

#include <QString>
#include <functional>
#include <stdexcept>
#include <utility>

namespace stellwyn::core {

// An error that no routine traps: a database failure, a bad table index, a value that will not
// convert. It unwinds to the handler the event loop entered, which shows its text once and ends
// the process with a non-zero status. Whatever was already stored stays stored.
class FatalError : public std::runtime_error {
public:
    explicit FatalError(const QString& text) : std::runtime_error(text.toStdString()) {}
    QString text() const { return QString::fromStdString(what()); }
};

// Where the text of a fatal error is shown: a message box, or standard error unattended. Set
// once by the program; without it the text goes to standard error.
void setFatalErrorHandler(std::function<void(const QString& text)> handler);

// Shows the text through the handler and ends the process with status 1. Everything stored is
// already on disk; nothing on the way out may run any more code that could touch the state the
// error left behind.
[[noreturn]] void endWithFatalError(const QString& text);

// Runs one of the program's own handlers at the point where the event loop enters it: a
// timer's tick, a control's event, a socket's signal. An error the handler did not trap ends
// the process here, since Qt's event code cannot carry an exception through itself.
template <typename Handler> void runHandler(Handler&& handler) noexcept {
    try {
        std::forward<Handler>(handler)();
    } catch (const FatalError& error) {
        endWithFatalError(error.text());
    } catch (const std::exception& error) {
        endWithFatalError(QString::fromLocal8Bit(error.what()));
    }
}

} // namespace stellwyn::core
