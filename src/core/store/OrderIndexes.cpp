#include "core/store/OrderIndexes.h"

#include "core/store/StoreLog.h"

#include <QCoreApplication>
#include <QSqlQuery>
#include <list>
#include <mutex>
#include <sqlite3.h>
#include <thread>

namespace stellwyn::core {

namespace {

struct OrderIndex {
    const char* name;
    const char* columns;
};

// Each order ends on ID, which is the rowid: SQLite keeps the rowid in every index entry and
// sorts equal keys by it, so the ID is no key column of its own.
constexpr OrderIndex kOrderIndexes[] = {
    {"datacol_datetime", "(Date, Time)"},
    {"datacol_scaleid", "(ScaleID, Date, Time)"},
    {"datacol_reading", "(Reading, Date, Time)"},
};

// The same orders as earlier files kept them, with the ID a second time in every entry.
constexpr const char* kFormerIndexes[] = {"datacol_by_datetime", "datacol_by_scaleid",
                                          "datacol_by_reading"};

// Below this many rows the indexes are made at once: it takes a blink.
constexpr qint64 kBuildLaterFrom = 50000;

QString createStatement(const OrderIndex& index) {
    return QStringLiteral("create index if not exists %1 on datacol %2")
        .arg(QLatin1String(index.name), QLatin1String(index.columns));
}

bool holdsIndex(Connection& connection, const char* name) {
    // Each statement ends before the next: one still open would lock the schema against a drop.
    return connection
        .run(QStringLiteral("select 1 from sqlite_master where type = 'index' and name = ?"),
             {QLatin1String(name)})
        .next();
}

qint64 rowCount(Connection& connection) {
    QSqlQuery count = connection.run(QStringLiteral("select count(*) from datacol"));
    count.next();
    return count.value(0).toLongLong();
}

bool lacksAny(Connection& connection) {
    for (const OrderIndex& index : kOrderIndexes) {
        if (!holdsIndex(connection, index.name)) {
            return true;
        }
    }
    for (const char* former : kFormerIndexes) {
        if (holdsIndex(connection, former)) {
            return true;
        }
    }
    return false;
}

// The builds under way, one thread and one SQLite connection each. The program's end stops
// them: an index half built is rolled back by SQLite and made again the next time it is asked.
class Builds {
public:
    static Builds& instance() {
        static Builds builds;
        static const bool stoppedWithTheApplication = [] {
            qAddPostRoutine([] { Builds::instance().stop(); });
            return true;
        }();
        (void)stoppedWithTheApplication;
        return builds;
    }

    ~Builds() { stop(); }
    Builds(const Builds&) = delete;
    Builds& operator=(const Builds&) = delete;

    void start(const QString& path) {
        std::lock_guard lock(mutex_);
        for (const Build& build : builds_) {
            if (build.path == path && !build.done) {
                return;
            }
        }
        stopping_ = false;
        Build& build = builds_.emplace_back();
        build.path = path;
        build.thread = std::thread([this, &build] { run(build); });
    }

    bool building(const QString& path) {
        std::lock_guard lock(mutex_);
        for (const Build& build : builds_) {
            if (build.path == path && !build.done) {
                return true;
            }
        }
        return false;
    }

    void wait() {
        std::list<Build> ending;
        {
            std::lock_guard lock(mutex_);
            ending.splice(ending.end(), builds_);
        }
        for (Build& build : ending) {
            build.thread.join();
        }
    }

    void stop() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
            for (Build& build : builds_) {
                if (build.db != nullptr) {
                    sqlite3_interrupt(build.db);
                }
            }
        }
        wait();
    }

private:
    Builds() = default;

    struct Build {
        QString path;
        std::thread thread;
        sqlite3* db = nullptr;
        bool done = false;
    };

    void run(Build& build) {
        sqlite3* db = nullptr;
        const QByteArray path = build.path.toUtf8();
        QString failure;
        if (sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
            failure = QString::fromUtf8(db != nullptr ? sqlite3_errmsg(db) : "out of memory");
        } else {
            {
                std::lock_guard lock(mutex_);
                build.db = stopping_ ? nullptr : db;
            }
            failure = buildIndexes(db, build.db == nullptr);
            std::lock_guard lock(mutex_);
            build.db = nullptr;
        }
        sqlite3_close(db);
        if (!failure.isEmpty()) {
            qCWarning(lcStore,
                      "The sort indexes of '%s' were not built: %s. They are built when "
                      "the collection grid is next opened.",
                      qUtf8Printable(build.path), qUtf8Printable(failure));
        }
        std::lock_guard lock(mutex_);
        build.done = true;
    }

    static QString buildIndexes(sqlite3* db, bool stopped) {
        if (stopped) {
            return QStringLiteral("the program was ending");
        }
        // The screen's own stores wait for each index in turn, up to this long, rather than
        // fail; an index of a million rows takes about a second.
        sqlite3_busy_timeout(db, 60000);
        // The sorter takes as much memory as the cache is given; a small one keeps it flat.
        sqlite3_exec(db, "pragma cache_size=-8192", nullptr, nullptr, nullptr);
        auto run = [db](const QString& sql) {
            return sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, nullptr) ==
                   SQLITE_OK;
        };
        for (const char* former : kFormerIndexes) {
            if (!run(QStringLiteral("drop index if exists %1").arg(QLatin1String(former)))) {
                return QString::fromUtf8(sqlite3_errmsg(db));
            }
        }
        for (const OrderIndex& index : kOrderIndexes) {
            if (!run(createStatement(index))) {
                return QString::fromUtf8(sqlite3_errmsg(db));
            }
        }
        return {};
    }

    std::mutex mutex_;
    std::list<Build> builds_;
    bool stopping_ = false;
};

} // namespace

bool hasOrderIndexes(Connection& connection) {
    for (const OrderIndex& index : kOrderIndexes) {
        if (holdsIndex(connection, index.name)) {
            return true;
        }
    }
    for (const char* former : kFormerIndexes) {
        if (holdsIndex(connection, former)) {
            return true;
        }
    }
    return false;
}

bool dropOrderIndexes(Connection& connection) {
    bool held = false;
    auto drop = [&](const char* name) {
        if (holdsIndex(connection, name)) {
            connection.run(QStringLiteral("drop index %1").arg(QLatin1String(name)));
            held = true;
        }
    };
    for (const OrderIndex& index : kOrderIndexes) {
        drop(index.name);
    }
    for (const char* former : kFormerIndexes) {
        drop(former);
    }
    return held;
}

void ensureOrderIndexes(Connection& connection) {
    if (Builds::instance().building(connection.path()) || !lacksAny(connection)) {
        return;
    }
    if (rowCount(connection) >= kBuildLaterFrom) {
        Builds::instance().start(connection.path());
        return;
    }
    Transaction transaction(connection);
    for (const char* former : kFormerIndexes) {
        connection.run(QStringLiteral("drop index if exists %1").arg(QLatin1String(former)));
    }
    for (const OrderIndex& index : kOrderIndexes) {
        connection.run(createStatement(index));
    }
    transaction.commit();
}

void buildOrderIndexesLater(const QString& path) {
    Builds::instance().start(path);
}

bool orderIndexesBuilding(const QString& path) {
    return Builds::instance().building(path);
}

void waitForOrderIndexes() {
    Builds::instance().wait();
}

} // namespace stellwyn::core
