#include "core/store/ConnectionText.h"

#include <QDir>

namespace stellwyn::core {

namespace {
const QString kDataSourceKey = QStringLiteral("Data Source=");
}

QString connectionText(const QString& folder) {
    return QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0; ") + kDataSourceKey +
           QDir::toNativeSeparators(folder + QStringLiteral("/svdata.mdb"));
}

QString dataSourceOf(const QString& connText) {
    const qsizetype at = connText.indexOf(kDataSourceKey, 0, Qt::CaseInsensitive);
    if (at < 0) {
        return connText.trimmed();
    }
    QString rest = connText.mid(at + kDataSourceKey.size());
    const qsizetype end = rest.indexOf(QLatin1Char(';'));
    if (end >= 0) {
        rest.truncate(end);
    }
    return rest.trimmed();
}

} // namespace stellwyn::core
