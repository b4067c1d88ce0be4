#include "AppHome.h"

#include <QDir>
#include <QStandardPaths>

namespace stellwyn::core {

AppHome::AppHome(const QString& folder) : folder_(QDir::cleanPath(folder)) {}

QString AppHome::resolve(const QString& commandLineHome) {
    if (!commandLineHome.isEmpty()) {
        return QDir(commandLineHome).absolutePath();
    }
    const QString fromEnvironment = qEnvironmentVariable("STELLWYN_HOME");
    if (!fromEnvironment.isEmpty()) {
        return QDir(fromEnvironment).absolutePath();
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Stellwyn");
}

QString AppHome::file(const QString& name) const {
    return folder_ + u'/' + name;
}

bool AppHome::ensureExists() const {
    return QDir().mkpath(folder_);
}

QString displayPath(const QString& path) {
    return QDir::toNativeSeparators(path);
}

} // namespace stellwyn::core
