#include "links/ReadBufferBound.h"

#include <QSerialPort>

namespace stellwyn::links {

ReadBufferBound::ReadBufferBound(QSerialPort& port, const QLoggingCategory& category)
    : note_(category, QStringLiteral("The unread input of a serial device")) {
    connection_ = QObject::connect(&port, &QIODevice::readyRead, [this, &port] {
        const qint64 over = port.bytesAvailable() - core::kInputCap;
        if (over > 0) {
            port.skip(over);
            note_.cut();
        }
    });
}

ReadBufferBound::~ReadBufferBound() {
    QObject::disconnect(connection_);
}

} // namespace stellwyn::links
