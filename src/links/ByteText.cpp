#include "links/ByteText.h"

namespace stellwyn::links {

QByteArray bytesOf(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar c : text) {
        // A character above 255 cannot travel; its low byte goes, as a one-byte-per-character
        // conversion has always done.
        bytes.append(static_cast<char>(c.unicode() & 0xFF));
    }
    return bytes;
}

QString textOf(const QByteArray& bytes) {
    QString text;
    text.reserve(bytes.size());
    for (const char b : bytes) {
        text.append(QChar(static_cast<unsigned char>(b)));
    }
    return text;
}

QByteArray untilNul(const QByteArray& buffer) {
    const qsizetype end = buffer.indexOf('\0');
    return end < 0 ? buffer : buffer.left(end);
}

} // namespace stellwyn::links
