#include "core/store/ReadingServer.h"

#include "core/SettingsStore.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSysInfo>
#include <QUrl>
#include <QUrlQuery>
#include <mutex>

namespace stellwyn::core {

namespace {

const QString kStore = QStringLiteral("Store=");
const QString kStation = QStringLiteral("Station=");

// How long a server that did not answer is left alone by readers (the grid, the status line):
// the outbox's sender tries it on its own timer meanwhile, and what it finds holds for them too.
constexpr qint64 kAwayForMs = 60000;

QString encoded(const QString& text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString field(const QString& text, const QString& key) {
    const qsizetype at = text.indexOf(key);
    if (at < 0) {
        return {};
    }
    const qsizetype from = at + key.size();
    const qsizetype end = text.indexOf(QLatin1Char(';'), from);
    return QUrl::fromPercentEncoding(text.mid(from, end < 0 ? -1 : end - from).toLatin1());
}

struct Seen {
    QString problem;
    QElapsedTimer since;
};

QHash<QString, Seen>& seen() {
    static QHash<QString, Seen> servers;
    return servers;
}

// A connection may be opened on any thread (its name is counted atomically for that), so two may
// note the same server at once.
std::mutex seenMutex;

} // namespace

QString ReadingServer::shown() const {
    return QUrl(url).toString(QUrl::RemovePassword);
}

ReadingServer readingServerSetting(const SettingsStore& settings) {
    ReadingServer server;
    server.url =
        settings.getSetting(QStringLiteral("Store"), QStringLiteral("Url"), QString()).trimmed();
    server.station =
        settings.getSetting(QStringLiteral("Store"), QStringLiteral("Station"), QString())
            .trimmed();
    if (server.station.isEmpty()) {
        server.station = QSysInfo::machineHostName();
    }
    return server;
}

QString readingsConnectionText(const QString& dataconn, const ReadingServer& server) {
    if (!server.configured()) {
        return dataconn;
    }
    // Encoded, so that neither can hold the ';' or the "Data Source=" that the rest is read by.
    return kStore + encoded(server.url) + QStringLiteral("; ") + kStation +
           encoded(server.station) + QStringLiteral("; ") + dataconn;
}

bool namesServer(const QString& readingsconn) {
    return readingsconn.startsWith(kStore);
}

ReadingServer serverOf(const QString& readingsconn) {
    if (!namesServer(readingsconn)) {
        return {};
    }
    return {field(readingsconn, kStore), field(readingsconn, kStation)};
}

ServerAddress serverAddress(const QString& url) {
    ServerAddress address;
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid() || (parsed.scheme() != u"postgresql" && parsed.scheme() != u"postgres")) {
        address.problem =
            QStringLiteral("the Url in [Store] is not of the form postgresql://user@host/db");
        return address;
    }
    if (!parsed.password().isEmpty()) {
        address.problem = QStringLiteral("the Url in [Store] holds a password; it belongs in "
                                         "~/.pgpass or PGPASSWORD, never in stellwyn.ini");
        return address;
    }
    address.host = parsed.host();
    address.port = parsed.port(-1);
    address.database = parsed.path().mid(1);
    address.user = parsed.userName();
    QStringList options;
    const QUrlQuery query(parsed);
    for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded)) {
        if (key == u"host") {
            address.host = value;
        } else if (key == u"port") {
            address.port = value.toInt();
        } else if (key == u"dbname") {
            address.database = value;
        } else if (key == u"user") {
            address.user = value;
        } else if (key == u"password") {
            address.problem = QStringLiteral("the Url in [Store] holds a password; it belongs in "
                                             "~/.pgpass or PGPASSWORD, never in stellwyn.ini");
            return address;
        } else if (key.contains(QLatin1Char(' ')) || value.contains(QLatin1Char(' ')) ||
                   value.contains(QLatin1Char(';'))) {
            address.problem = QStringLiteral("the Url in [Store] has a parameter \"%1\" that "
                                             "cannot be passed on")
                                  .arg(key);
            return address;
        } else {
            options << key + QLatin1Char('=') + value;
        }
    }
    address.options = options.join(QLatin1Char(';'));
    return address;
}

QString serverAwayMessage(const QString& shownUrl, const QString& problem) {
    // libpq ends some of its messages with a stop or a question of their own.
    const bool ended = problem.endsWith(QLatin1Char('.')) || problem.endsWith(QLatin1Char('?')) ||
                       problem.endsWith(QLatin1Char('!'));
    return QStringLiteral("Readings server %1 cannot be reached: %2%3 Readings wait on this "
                          "station until it answers.")
        .arg(shownUrl, problem, ended ? QString() : QStringLiteral("."));
}

QString serverProblem(const QString& url) {
    const std::lock_guard lock(seenMutex);
    const auto it = seen().constFind(url);
    return it == seen().cend() ? QString() : it->problem;
}

bool serverAway(const QString& url) {
    const std::lock_guard lock(seenMutex);
    const auto it = seen().constFind(url);
    return it != seen().cend() && !it->problem.isEmpty() && it->since.elapsed() < kAwayForMs;
}

bool noteServerAnswered(const QString& url) {
    const std::lock_guard lock(seenMutex);
    Seen& state = seen()[url];
    const bool changed = !state.problem.isEmpty();
    state.problem.clear();
    return changed;
}

bool noteServerAway(const QString& url, const QString& problem) {
    const std::lock_guard lock(seenMutex);
    Seen& state = seen()[url];
    const bool changed = state.problem != problem;
    state.problem = problem;
    state.since.start();
    return changed;
}

} // namespace stellwyn::core
