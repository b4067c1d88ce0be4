#pragma once

#include "Dialogs.h"

class QWidget;

namespace stellwyn::core {

// Real message boxes, owned by the frame when there is one.
class WidgetDialogs final : public Dialogs {
public:
    void setOwner(QWidget* owner) { owner_ = owner; }

    void message(const QString& text) override;
    bool question(const QString& title, const QString& text) override;
    void beep() override;
    void setBusy(bool busy) override;
    void fatal(const QString& text) override;
    bool interactive() const override { return true; }

private:
    QWidget* owner_ = nullptr;
    int busyDepth_ = 0;
};

} // namespace stellwyn::core
