#include "SerialDeviceList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace stellwyn::core {

namespace {

QString firstLine(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    // sysfs attributes are one short line; a bound keeps a strange file from being read whole.
    return QString::fromUtf8(file.readLine(256)).trimmed();
}

// The USB device above a tty in sysfs is the first ancestor of its device folder that carries
// a product name; the interface and the port folders below it carry none.
QString usbDescription(const QString& sysClassTty, const QString& ttyName) {
    QString folder =
        QFileInfo(sysClassTty + u'/' + ttyName + QStringLiteral("/device")).canonicalFilePath();
    for (int depth = 0; depth < 4 && !folder.isEmpty(); ++depth) {
        const QString product = firstLine(folder + QStringLiteral("/product"));
        if (!product.isEmpty()) {
            const QString maker = firstLine(folder + QStringLiteral("/manufacturer"));
            return maker.isEmpty() ? product : maker + u' ' + product;
        }
        const QString parent = QFileInfo(folder).path();
        if (parent == folder) {
            break;
        }
        folder = parent;
    }
    return {};
}

int ttySNumber(const QString& name) {
    bool ok = false;
    const int number = name.mid(4).toInt(&ok);
    return ok ? number : -1;
}

} // namespace

QList<SerialDevice> serialDevices(const SerialDeviceRoots& roots) {
    QList<SerialDevice> devices;

    const QDir byId(roots.byId);
    for (const QFileInfo& link :
         byId.entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot, QDir::Name)) {
        // A link whose device has gone is left out: it is no longer a choice.
        const QString target = link.canonicalFilePath();
        if (target.isEmpty()) {
            continue;
        }
        devices << SerialDevice{link.absoluteFilePath(),
                                usbDescription(roots.sysClassTty, QFileInfo(target).fileName())};
    }

    // A ttyS port without a UART has the type 0 (unknown); one with a UART names its kind.
    QStringList builtIn;
    for (const QString& name :
         QDir(roots.sysClassTty).entryList({QStringLiteral("ttyS*")}, QDir::AllEntries)) {
        if (ttySNumber(name) >= 0 &&
            firstLine(roots.sysClassTty + u'/' + name + QStringLiteral("/type")).toInt() != 0 &&
            QFile::exists(roots.dev + u'/' + name)) {
            builtIn << name;
        }
    }
    std::sort(builtIn.begin(), builtIn.end(),
              [](const QString& a, const QString& b) { return ttySNumber(a) < ttySNumber(b); });
    for (const QString& name : builtIn) {
        devices << SerialDevice{roots.dev + u'/' + name, {}};
    }
    return devices;
}

} // namespace stellwyn::core
