#include "WidgetDialogsView.h"

#include <QApplication>
#include <QGuiApplication>
#include <QMessageBox>

namespace stellwyn::core {

namespace {
// Texts are joined with carriage returns; a message box breaks lines only at line feeds.
QString shown(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\r', u'\n');
    return text;
}
} // namespace

void WidgetDialogs::message(const QString& text) {
    QMessageBox box(QMessageBox::NoIcon, QString(), shown(text), QMessageBox::Ok, owner_);
    box.exec();
}

bool WidgetDialogs::question(const QString& title, const QString& text) {
    QMessageBox box(QMessageBox::Question, title, shown(text), QMessageBox::Yes | QMessageBox::No,
                    owner_);
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}

void WidgetDialogs::beep() {
    QApplication::beep();
}

void WidgetDialogs::setBusy(bool busy) {
    if (busy) {
        ++busyDepth_;
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (busyDepth_ > 0) {
        --busyDepth_;
        QGuiApplication::restoreOverrideCursor();
    }
}

void WidgetDialogs::fatal(const QString& text) {
    while (busyDepth_ > 0) {
        setBusy(false);
    }
    QMessageBox box(QMessageBox::Critical, QString(), shown(text), QMessageBox::Ok, owner_);
    box.exec();
}

} // namespace stellwyn::core
