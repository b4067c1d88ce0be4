#pragma once

#include <QString>

namespace stellwyn::core {

class SettingsStore;

// A PostgreSQL server that keeps the readings of many stations, as [Store] of stellwyn.ini
// names it: Url=postgresql://user@host:port/db (a Unix socket folder as ?host=/path), and
// Station=, this station's name on its rows. The password is never in the settings: libpq takes
// it from ~/.pgpass or PGPASSWORD.
struct ReadingServer {
    QString url;
    QString station;

    bool configured() const { return !url.isEmpty(); }
    // The url as messages show it: never with a password, should one have been written in.
    QString shown() const;
};

// [Store] of the settings; no Url: the readings stay in the station's data file.
ReadingServer readingServerSetting(const SettingsStore& settings);

// The connection text of the readings, as data2 and the status line carry it: the data file's
// own text when no server is set, else one that names the server and the station as well as the
// data file, which then holds the readings still waiting to be sent.
QString readingsConnectionText(const QString& dataconn, const ReadingServer& server);
bool namesServer(const QString& readingsconn);
ReadingServer serverOf(const QString& readingsconn);

// The settings a QPSQL connection takes, read from the url: host (or socket folder), port,
// database, user and libpq's own options. Anything that cannot be read is in `problem`.
struct ServerAddress {
    QString host;
    int port = -1;
    QString database;
    QString user;
    // libpq's own keywords from the query string (sslmode=require...), ';'-separated.
    QString options;
    QString problem;
};
ServerAddress serverAddress(const QString& url);

// The one message of a server that could not be reached or would not take the readings.
QString serverAwayMessage(const QString& shownUrl, const QString& problem);

// What the last attempt to reach a server found: empty when it answered. A server that did not
// is not tried again by every reader for a while, so a screen that refreshes does not wait on
// the connect timeout each time; the outbox's sender tries on its own timer.
QString serverProblem(const QString& url);
bool serverAway(const QString& url);
// Notes the outcome of an attempt; true when it changed what is known of the server, so the
// caller tells it once rather than at every retry.
bool noteServerAnswered(const QString& url);
bool noteServerAway(const QString& url, const QString& problem);

} // namespace stellwyn::core
