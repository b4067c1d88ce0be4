#pragma once

#include "core/Dialogs.h"

#include <QStringList>
#include <memory>
#include <utility>

namespace stellwyn::indicator_config {

// The program's dialogs, which also keep the texts of the message boxes shown while a command
// from another program runs, so that a client that waits can be told them. Everything still
// reaches the operator as before.
class CapturingDialogs final : public core::Dialogs {
public:
    explicit CapturingDialogs(std::unique_ptr<core::Dialogs> inner);

    void message(const QString& text) override;
    bool question(const QString& title, const QString& text) override;
    void beep() override { inner_->beep(); }
    void setBusy(bool busy) override { inner_->setBusy(busy); }
    void fatal(const QString& text) override { inner_->fatal(text); }
    bool interactive() const override { return inner_->interactive(); }

    // From here on, message texts are kept as well as shown.
    void startCapture();
    // The texts kept since startCapture, which ends the capture.
    QStringList takeCaptured();

private:
    std::unique_ptr<core::Dialogs> inner_;
    bool capturing_ = false;
    QStringList captured_;
};

} // namespace stellwyn::indicator_config
