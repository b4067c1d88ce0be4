#include "Dialogs.h"

#include <cstdio>

namespace stellwyn::core {

namespace {
void writeLine(const QString& line) {
    const QByteArray bytes = line.toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}
} // namespace

QString UnattendedDialogs::oneLine(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\r') {
            out += QStringLiteral("\\n");
            if (i + 1 < text.size() && text.at(i + 1) == u'\n') {
                ++i;
            }
        } else if (c == u'\n') {
            out += QStringLiteral("\\n");
        } else {
            out += c;
        }
    }
    return out;
}

void UnattendedDialogs::message(const QString& text) {
    writeLine(QStringLiteral("message: ") + oneLine(text));
}

bool UnattendedDialogs::question(const QString& title, const QString& text) {
    writeLine(QStringLiteral("question: ") + oneLine(title) + QStringLiteral(": ") + oneLine(text));
    return answerYes_;
}

void UnattendedDialogs::fatal(const QString& text) {
    writeLine(QStringLiteral("fatal: ") + oneLine(text));
}

} // namespace stellwyn::core
