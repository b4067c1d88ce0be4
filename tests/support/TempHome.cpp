#include "TempHome.h"

#include <QFile>

namespace stellwyn::testsupport {

TempHome::TempHome() {
    dir_.setAutoRemove(true);
}

bool TempHome::exists(const QString& name) const {
    return QFile::exists(file(name));
}

QByteArray TempHome::read(const QString& name) const {
    QFile f(file(name));
    if (!f.open(QIODevice::ReadOnly)) {
        return {};
    }
    return f.readAll();
}

void TempHome::write(const QString& name, const QByteArray& bytes) const {
    QFile f(file(name));
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        f.write(bytes);
    }
}

} // namespace stellwyn::testsupport
