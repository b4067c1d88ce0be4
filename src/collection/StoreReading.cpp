#include "StoreReading.h"

#include "core/Clock.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "core/store/Connection.h"
#include "core/store/DataColTable.h"
#include "core/store/StoreLog.h"

#include <QCoreApplication>
#include <limits>
#include <optional>

namespace stellwyn::collection {

namespace {
// The readings file stays open between stores, as the screen's recordset of it always was:
// opening it again for every reading would cost more than the write itself.
struct HeldFile {
    std::optional<core::Connection> connection;
    QString text;
};

HeldFile& held() {
    static HeldFile file;
    static const bool closedWithTheApplication = [] {
        // Closed while the database drivers are still loaded, not at the very end.
        qAddPostRoutine([] { held().connection.reset(); });
        return true;
    }();
    (void)closedWithTheApplication;
    return file;
}

core::Connection& readingsFile(const QString& dataconn) {
    HeldFile& file = held();
    if (!file.connection || file.text != dataconn) {
        file.connection.reset();
        file.connection.emplace(core::Connection::open(dataconn));
        file.text = dataconn;
    }
    return *file.connection;
}
} // namespace

qint64 store_reading(core::Module1& m, const core::Clock& clock, const QString& scaleid,
                     const std::optional<QString>& reading) {
    try {
        const qint64 id =
            core::insertReading(readingsFile(m.dataconn), scaleid, reading, clock.now());
        // Written only once the commit has returned: every row named here is on the disk.
        qCInfo(core::lcStore, "stored reading %lld: %s %s", static_cast<long long>(id),
               qUtf8Printable(scaleid), qUtf8Printable(reading.value_or(QString())));
        return id;
    } catch (const core::DatabaseError&) {
        // A file that went away or was replaced is opened afresh at the next store.
        held().connection.reset();
        throw;
    }
}

void setExcelRowAfter(core::Module1& m, qint64 storedId) {
    if (storedId + 1 > std::numeric_limits<std::int16_t>::max()) {
        throw core::FatalError(QStringLiteral("Overflow (spreadsheet row %1)").arg(storedId + 1));
    }
    m.excelrow = static_cast<std::int16_t>(storedId + 1);
}

} // namespace stellwyn::collection
