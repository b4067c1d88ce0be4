#pragma once

#include "core/Dialogs.h"

#include <QList>
#include <QStringList>

namespace stellwyn::testsupport {

// Records every text the program says, in order, in the same one-line form the unattended
// backend writes ("message: ...", "question: title: text", "beep", "busy", "idle",
// "fatal: ..."), and answers questions from a script (No when the script is empty).
class RecordingDialogs final : public core::Dialogs {
public:
    void message(const QString& text) override;
    bool question(const QString& title, const QString& text) override;
    void beep() override { said << QStringLiteral("beep"); }
    void setBusy(bool busy) override {
        said << (busy ? QStringLiteral("busy") : QStringLiteral("idle"));
    }
    void fatal(const QString& text) override;
    bool interactive() const override { return interactiveScreens; }

    // Only the message, question and fatal lines, without beeps and pointer changes.
    QStringList texts() const;

    QStringList said;
    QList<bool> answers;
    bool interactiveScreens = true;
};

} // namespace stellwyn::testsupport
