#include "core/store/SysCfg.h"

#include "core/store/StoredValues.h"

namespace stellwyn::core {

namespace {

// The program's one row is the first one stored; later rows, should a tool add any, are
// never read or written.
const QString kFirstRow = QStringLiteral("rowid = (select min(rowid) from syscfg)");

QString slaveColumn(int k, const char* what) {
    return QStringLiteral("slave%1%2").arg(k).arg(QLatin1String(what));
}

} // namespace

std::optional<SysCfgRecord> readSysCfg(Connection& connection) {
    // The slave columns are named from the fixed range 0..8, never from data.
    QStringList columns = {QStringLiteral("commtype"),        QStringLiteral("commport"),
                           QStringLiteral("rfnet"),           QStringLiteral("smallfonts"),
                           QStringLiteral("rfnetid"),         QStringLiteral("tagblz"),
                           QStringLiteral("netpolltime"),     QStringLiteral("netdeltime"),
                           QStringLiteral("datacolenbstart"), QStringLiteral("usbreset")};
    for (const char* what : {"enb", "left", "top"}) {
        for (int k = 0; k < kSavedSlaves; ++k) {
            columns << slaveColumn(k, what);
        }
    }
    QSqlQuery query =
        connection.run(QStringLiteral("select ") + columns.join(QStringLiteral(", ")) +
                       QStringLiteral(" from syscfg where ") + kFirstRow);
    if (!query.next()) {
        return std::nullopt;
    }
    SysCfgRecord r;
    int i = 0;
    for (QVariant* field :
         {&r.commtype, &r.commport, &r.rfnet, &r.smallfonts, &r.rfnetid, &r.tagblz, &r.netpolltime,
          &r.netdeltime, &r.datacolenbstart, &r.usbreset}) {
        *field = query.value(i++);
    }
    for (auto* slaves : {&r.slaveEnb, &r.slaveLeft, &r.slaveTop}) {
        for (QVariant& value : *slaves) {
            value = query.value(i++);
        }
    }
    return r;
}

SysCfgRecord readSysCfg(const QString& connText) {
    Connection connection = Connection::open(connText);
    std::optional<SysCfgRecord> record = readSysCfg(connection);
    if (!record) {
        throw DatabaseError(QStringLiteral("The table syscfg holds no record."));
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
