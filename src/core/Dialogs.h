#pragma once

#include <QString>

namespace stellwyn::core {

// Everything the program says to the operator goes through here: message boxes with one OK
// button and no title, Yes/No questions with a title, the beep and the busy pointer.
// The widget backend shows real boxes; the unattended backend writes each text to standard
// error; tests record what was said and script the answers.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    virtual void message(const QString& text) = 0;
    // True when the answer is Yes.
    virtual bool question(const QString& title, const QString& text) = 0;
    virtual void beep() = 0;
    virtual void setBusy(bool busy) = 0;
    // The one box of the fatal error path; the caller ends the process afterwards.
    virtual void fatal(const QString& text) = 0;
    // False when no screen may be shown: modal choosers then count as cancelled.
    virtual bool interactive() const = 0;
};

// Writes one line a text; a CR, an LF or a CR LF pair inside the text becomes the two
// characters \n, so that each message stays one line for scripts that read the output.
class UnattendedDialogs final : public Dialogs {
public:
    explicit UnattendedDialogs(bool answerYes) : answerYes_(answerYes) {}

    void message(const QString& text) override;
    bool question(const QString& title, const QString& text) override;
    void beep() override {}
    void setBusy(bool) override {}
    void fatal(const QString& text) override;
    bool interactive() const override { return false; }

    static QString oneLine(const QString& text);

private:
    bool answerYes_;
};

} // namespace stellwyn::core
