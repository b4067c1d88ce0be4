#pragma once

#include <QString>
#include <stdexcept>

namespace stellwyn::core {

// An error that no routine traps: a database failure, a bad table index, a value that will not
// convert. It unwinds to the application's event dispatch, which shows its text once and ends
// the process with a non-zero status. Whatever was already stored stays stored.
class FatalError : public std::runtime_error {
public:
    explicit FatalError(const QString& text) : std::runtime_error(text.toStdString()) {}
    QString text() const { return QString::fromStdString(what()); }
};

} // namespace stellwyn::core
