#include "core/store/SysCfg.h"

#include "core/store/StoredValues.h"

#include <QDir>

namespace stellwyn::core {

namespace {

// The program's one row is the first one stored; later rows, should a tool add any, are
// never read or written.
const QString kFirstRow = QStringLiteral("rowid = (select min(rowid) from syscfg)");

QString slaveColumn(int k, const char* what) {
    return QStringLiteral("slave%1%2").arg(k).arg(QLatin1String(what));
}

} // namespace

std::optional<SysCfgRecord> readSysCfg(Connection& connection, SysCfgPart part) {
    // Each reader asks for its own columns only, so that a record without a column one of them
    // has no need of does not stop it. The names are fixed here, never taken from data.
    struct Column {
        QString name;
        QVariant* into;
    };
    SysCfgRecord r;
    QList<Column> columns;
    if (part != SysCfgPart::SlaveLayout) {
        columns = {{QStringLiteral("commtype"), &r.commtype},
                   {QStringLiteral("commport"), &r.commport},
                   {QStringLiteral("rfnet"), &r.rfnet},
                   {QStringLiteral("smallfonts"), &r.smallfonts},
                   {QStringLiteral("rfnetid"), &r.rfnetid},
                   {QStringLiteral("tagblz"), &r.tagblz},
                   {QStringLiteral("netpolltime"), &r.netpolltime},
                   {QStringLiteral("netdeltime"), &r.netdeltime},
                   {QStringLiteral("datacolenbstart"), &r.datacolenbstart}};
    }
    if (part == SysCfgPart::Everything) {
        columns << Column{QStringLiteral("usbreset"), &r.usbreset};
    }
    if (part != SysCfgPart::LoadedSettings) {
        const std::pair<const char*, std::array<QVariant, kSavedSlaves>*> slaves[] = {
            {"enb", &r.slaveEnb}, {"left", &r.slaveLeft}, {"top", &r.slaveTop}};
        for (const auto& [what, values] : slaves) {
            for (int k = 0; k < kSavedSlaves; ++k) {
                columns << Column{slaveColumn(k, what), &(*values)[static_cast<std::size_t>(k)]};
            }
        }
    }
    QStringList names;
    for (const Column& c : columns) {
        names << c.name;
    }
    QSqlQuery query = connection.run(QStringLiteral("select ") + names.join(QStringLiteral(", ")) +
                                     QStringLiteral(" from syscfg where ") + kFirstRow);
    if (!query.next()) {
        return std::nullopt;
    }
    int i = 0;
    for (const Column& c : columns) {
        *c.into = query.value(i++);
    }
    return r;
}

SysCfgRecord readSysCfg(const QString& connText, SysCfgPart part) {
    Connection connection = Connection::open(connText);
    std::optional<SysCfgRecord> record = readSysCfg(connection, part);
    if (!record) {
        throw DatabaseError(QStringLiteral("%1: the table syscfg holds no record.")
                                .arg(QDir::toNativeSeparators(connection.path())));
    }
    return *record;
}

bool writeSysCfg(Connection& connection, const SysCfgSettings& s) {
    QSqlQuery query = connection.run(
        QStringLiteral("update syscfg set commtype = ?, commport = ?, netpolltime = ?, "
                       "netdeltime = ?, usbreset = ?, rfnet = ?, smallfonts = ?, "
                       "datacolenbstart = ?, rfnetid = ? where ") +
            kFirstRow,
        {s.commtype, s.commport, s.netpolltime, s.netdeltime, s.usbreset, yesNo(s.rfnet),
         yesNo(s.smallfonts), yesNo(s.datacolenbstart), s.rfnetid});
    return query.numRowsAffected() > 0;
}

void writeSlaveLayout(Connection& connection, const std::array<SlavePlace, kSavedSlaves>& places) {
    Transaction transaction(connection);
    for (int k = 0; k < kSavedSlaves; ++k) {
        const SlavePlace& place = places[static_cast<std::size_t>(k)];
        QSqlQuery query =
            place.open
                ? connection.run(QStringLiteral("update syscfg set %1 = ?, %2 = ?, %3 = ? where ")
                                         .arg(slaveColumn(k, "enb"), slaveColumn(k, "top"),
                                              slaveColumn(k, "left")) +
                                     kFirstRow,
                                 {kYes, place.top, place.left})
                : connection.run(
                      QStringLiteral("update syscfg set %1 = ? where ").arg(slaveColumn(k, "enb")) +
                          kFirstRow,
                      {kNo});
        if (query.numRowsAffected() == 0) {
            throw DatabaseError(QStringLiteral("syscfg has no row to keep the slave layout in."));
        }
    }
    transaction.commit();
}

} // namespace stellwyn::core
