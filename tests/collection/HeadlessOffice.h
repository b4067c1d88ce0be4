#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace stellwyn::testsupport {

// A real LibreOffice for one test program: a profile of its own in a temporary folder, a pipe
// of its own, stopped by its process id. Tests open, read and close documents in it through
// the same bridge the program uses.
class HeadlessOffice {
public:
    HeadlessOffice();
    ~HeadlessOffice();

    // Starts the office and waits until it accepts on its pipe; false with the reason in
    // `error` when it does not.
    bool start(QString& error);
    const QString& pipe() const { return pipe_; }

    // A new Calc document; returns its index in the office's list of open documents.
    int newSpreadsheet();
    // A file loaded without a window.
    int open(const QString& path);
    void closeAll();
    void addSheet(int document, bool makeActive);
    // The cell as the sheet shows it, and its kind: "text", "value", "empty" or "formula".
    QString text(int document, int row, int column, int sheet = -1);
    QString kind(int document, int row, int column, int sheet = -1);
    double value(int document, int row, int column);

private:
    struct Uno;
    QTemporaryDir profile_;
    QString pipe_;
    QProcess process_;
    std::unique_ptr<Uno> uno_;
};

} // namespace stellwyn::testsupport
