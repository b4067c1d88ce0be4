#include "StoreReading.h"

#include "core/Clock.h"
#include "core/Module1.h"
#include "core/store/Connection.h"
#include "core/store/DataColTable.h"

namespace stellwyn::collection {

qint64 store_reading(core::Module1& m, const core::Clock& clock, const QString& scaleid,
                     const std::optional<QString>& reading) {
    core::Connection connection = core::Connection::open(m.dataconn);
    return core::insertReading(connection, scaleid, reading, clock.now());
}

} // namespace stellwyn::collection
