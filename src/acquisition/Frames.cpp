#include "Frames.h"

namespace stellwyn::acquisition::frames {

char addressByte(std::int32_t netId) {
    return static_cast<char>(netId & 0xFF);
}

QByteArray starRequest(char code) {
    return QByteArray("*") + code;
}

QByteArray starUpload(char code) {
    return QByteArray("!U") + code;
}

QByteArray addressPrefix(std::int32_t netId) {
    QByteArray frame;
    frame += addressByte(netId);
    frame += requestMarker;
    return frame;
}

QByteArray addressedRequest(std::int32_t netId, char code) {
    return addressPrefix(netId) + code;
}

QByteArray addressedUpload(std::int32_t netId, char code) {
    QByteArray frame;
    frame += addressByte(netId);
    frame += uploadMarker;
    frame += code;
    return frame;
}

char readingCode(const QString& commtype, bool frameTicked) {
    if (commtype == u"Ethernet") {
        return 'K';
    }
    if (frameTicked) {
        return 'F';
    }
    return commtype == u"RS232" ? 'P' : '1';
}

std::optional<char> passKey(int keycode) {
    if (keycode == 1) {
        return std::nullopt;
    }
    return keypadKey(keycode);
}

std::optional<char> keypadKey(int keycode) {
    if (keycode >= 0 && keycode <= 9) {
        return static_cast<char>('0' + keycode);
    }
    if (keycode == 10) {
        return '.';
    }
    if (keycode == 11) {
        return 'E';
    }
    return std::nullopt;
}

} // namespace stellwyn::acquisition::frames
