#include "StoreReading.h"

#include "core/Clock.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/DataColTable.h"
#include "core/store/Outbox.h"
#include "core/store/ReadingServer.h"
#include "core/store/StoreLog.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace stellwyn::collection {

namespace {

// While readings wait for their server, it is tried again after this long, then after twice as
// long each time it still does not answer, up to the longest wait. Each try may hold the screen
// for the connect timeout when the server's host does not answer at all.
constexpr int kRetryMs = 10000;
constexpr int kLongestRetryMs = 60000;

// The readings file stays open between stores, as the screen's recordset of it always was:
// opening it again for every reading would cost more than the write itself. So does the
// connection to the server, where the readings go on to one.
struct HeldFile {
    std::optional<core::Connection> connection;
    QString text;
    std::unique_ptr<core::OutboxSender> sender;
    std::unique_ptr<QTimer> retry;
    int retryMs = kRetryMs;

    void reset() {
        retry.reset();
        sender.reset();
        connection.reset();
        text.clear();
    }
};

HeldFile& held() {
    static HeldFile file;
    static const bool closedWithTheApplication = [] {
        // Closed while the database drivers are still loaded, not at the very end.
        qAddPostRoutine([] { held().reset(); });
        return true;
    }();
    (void)closedWithTheApplication;
    return file;
}

const QString& readingsText(const core::Module1& m) {
    return m.readingsconn.isEmpty() ? m.dataconn : m.readingsconn;
}

HeldFile& readingsFile(const QString& text) {
    HeldFile& file = held();
    if (!file.connection || file.text != text) {
        file.reset();
        if (core::namesServer(text)) {
            // The outbox is in the station's own data file.
            file.connection.emplace(core::Connection::open(core::dataSourceOf(text)));
            core::prepareOutbox(*file.connection);
            file.sender = std::make_unique<core::OutboxSender>(core::serverOf(text));
        } else {
            file.connection.emplace(core::Connection::open(text));
        }
        file.text = text;
    }
    return file;
}

qint64 sendFrom(HeldFile& file, bool evenIfAway) {
    const qint64 waiting = file.sender->send(*file.connection, evenIfAway);
    if (waiting == 0) {
        file.retryMs = kRetryMs;
    }
    if (waiting > 0 && QCoreApplication::instance() != nullptr) {
        if (!file.retry) {
            file.retry = std::make_unique<QTimer>();
            file.retry->setSingleShot(true);
            QObject::connect(file.retry.get(), &QTimer::timeout, [] {
                core::runHandler([] {
                    HeldFile& again = held();
                    if (again.sender) {
                        again.retryMs = std::min(again.retryMs * 2, kLongestRetryMs);
                        sendFrom(again, true);
                    }
                });
            });
        }
        if (!file.retry->isActive()) {
            file.retry->start(file.retryMs);
        }
    }
    return waiting;
}

} // namespace

qint64 store_reading(core::Module1& m, const core::Clock& clock, const QString& scaleid,
                     const std::optional<QString>& reading) {
    try {
        HeldFile& file = readingsFile(readingsText(m));
        if (file.sender) {
            const qint64 id = core::queueReading(*file.connection, scaleid, reading, clock.now());
            qCInfo(core::lcStore, "stored reading %lld in the outbox: %s %s",
                   static_cast<long long>(id), qUtf8Printable(scaleid),
                   qUtf8Printable(reading.value_or(QString())));
            // Kept whatever the server does; a server found away is left to the retry.
            sendFrom(file, false);
            return id;
        }
        const qint64 id = core::insertReading(*file.connection, scaleid, reading, clock.now());
        // Written only once the commit has returned: every row named here is on the disk.
        qCInfo(core::lcStore, "stored reading %lld: %s %s", static_cast<long long>(id),
               qUtf8Printable(scaleid), qUtf8Printable(reading.value_or(QString())));
        return id;
    } catch (const core::DatabaseError&) {
        // A file that went away or was replaced is opened afresh at the next store.
        held().reset();
        throw;
    }
}

qint64 sendWaitingReadings(core::Module1& m) {
    const QString& text = readingsText(m);
    if (!core::namesServer(text)) {
        return 0;
    }
    try {
        return sendFrom(readingsFile(text), true);
    } catch (const core::DatabaseError&) {
        held().reset();
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
