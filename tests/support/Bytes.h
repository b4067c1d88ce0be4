#pragma once

#include <QByteArray>
#include <initializer_list>

namespace stellwyn::testsupport {

// Bytes written out by value, for frames that mix binary bytes and text: bytes({0x82, 0x11, '1'}).
inline QByteArray bytes(std::initializer_list<int> values) {
    QByteArray out;
    for (int v : values) {
        out += static_cast<char>(v);
    }
    return out;
}

} // namespace stellwyn::testsupport
