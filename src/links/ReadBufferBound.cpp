#include "links/ReadBufferBound.h"

#include "links/LinksLog.h"

#include <QSerialPort>

namespace stellwyn::links {

ReadBufferBound::ReadBufferBound(QSerialPort& port)
    : note_(lcLinks(), QStringLiteral("The unread input of a serial device")) {
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
