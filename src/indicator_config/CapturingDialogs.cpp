#include "CapturingDialogs.h"

namespace stellwyn::indicator_config {

CapturingDialogs::CapturingDialogs(std::unique_ptr<core::Dialogs> inner)
    : inner_(std::move(inner)) {}

void CapturingDialogs::message(const QString& text) {
    if (capturing_) {
        captured_ << text;
    }
    inner_->message(text);
}

bool CapturingDialogs::question(const QString& title, const QString& text) {
    if (capturing_) {
        captured_ << text;
    }
    return inner_->question(title, text);
}

void CapturingDialogs::startCapture() {
    captured_.clear();
    capturing_ = true;
}

QStringList CapturingDialogs::takeCaptured() {
    capturing_ = false;
    return std::exchange(captured_, {});
}

} // namespace stellwyn::indicator_config
