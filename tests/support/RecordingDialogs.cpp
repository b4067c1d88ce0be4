#include "RecordingDialogs.h"

namespace stellwyn::testsupport {

using core::UnattendedDialogs;

void RecordingDialogs::message(const QString& text) {
    said << QStringLiteral("message: ") + UnattendedDialogs::oneLine(text);
}

bool RecordingDialogs::question(const QString& title, const QString& text) {
    said << QStringLiteral("question: ") + UnattendedDialogs::oneLine(title) +
                QStringLiteral(": ") + UnattendedDialogs::oneLine(text);
    return answers.isEmpty() ? false : answers.takeFirst();
}

void RecordingDialogs::fatal(const QString& text) {
    said << QStringLiteral("fatal: ") + UnattendedDialogs::oneLine(text);
}

QStringList RecordingDialogs::texts() const {
    QStringList out;
    for (const QString& line : said) {
        if (line.startsWith(u"message: ") || line.startsWith(u"question: ") ||
            line.startsWith(u"fatal: ")) {
            out << line;
        }
    }
    return out;
}

} // namespace stellwyn::testsupport
