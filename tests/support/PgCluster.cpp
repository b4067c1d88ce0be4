#include "PgCluster.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <algorithm>
#include <csignal>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace stellwyn::testsupport {

namespace {
// Ourselves, or nobody when we are root.
const passwd* clusterUser() {
    return ::getuid() == 0 ? ::getpwnam("nobody") : ::getpwuid(::getuid());
}
} // namespace

PgCluster::PgCluster() {
    // The newest server Debian has put there.
    QStringList versions = QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs);
    std::sort(versions.begin(), versions.end(),
              [](const QString& a, const QString& b) { return a.toInt() < b.toInt(); });
    for (const QString& version : versions) {
        const QString bin = QStringLiteral("/usr/lib/postgresql/%1/bin").arg(version);
        if (QFile::exists(bin + QStringLiteral("/initdb"))) {
            bin_ = bin;
        }
    }
    const passwd* user = clusterUser();
    if (bin_.isEmpty()) {
        error_ = QStringLiteral("PostgreSQL's initdb is not under /usr/lib/postgresql/*/bin: "
                                "scripts/setup installs the package postgresql");
    } else if (!dir_.isValid() || user == nullptr ||
               ::chown(QFile::encodeName(dir_.path()).constData(), user->pw_uid, user->pw_gid)) {
        error_ = QStringLiteral("cannot give the folder %1 to the cluster's user").arg(dir_.path());
    } else {
        QProcess initdb;
        const bool made =
            run(initdb, QStringLiteral("initdb"),
                {QStringLiteral("-D"), dir_.filePath(QStringLiteral("data")), QStringLiteral("-U"),
                 QStringLiteral("postgres"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                 QStringLiteral("--locale=C.UTF-8"), QStringLiteral("--no-sync")}) &&
            initdb.waitForFinished(120000) && initdb.exitStatus() == QProcess::NormalExit &&
            initdb.exitCode() == 0;
        if (!made) {
            error_ = QStringLiteral("initdb failed: ") + QString::fromLocal8Bit(initdb.readAll());
            return;
        }
        // First match wins.
        QFile hba(dir_.filePath(QStringLiteral("data/pg_hba.conf")));
        if (!hba.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            hba.write(QByteArray("local all ") + passwordRole +
                      " scram-sha-256\nlocal all all trust\n") < 0) {
            error_ = QStringLiteral("cannot write pg_hba.conf");
        }
    }
}

bool PgCluster::run(QProcess& process, const QString& binary, const QStringList& arguments) {
    const passwd* user = clusterUser();
    const uid_t uid = user->pw_uid;
    const gid_t gid = user->pw_gid;
    process.setChildProcessModifier([uid, gid] {
        if (::getuid() == 0 && (::setgid(gid) != 0 || ::setuid(uid) != 0)) {
            ::_exit(126);
        }
        // Set after the change of user, which clears it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    process.setWorkingDirectory(dir_.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(bin_ + QLatin1Char('/') + binary, arguments);
    return process.waitForStarted();
}

bool PgCluster::start() {
    if (!error_.isEmpty() || server_) {
        return error_.isEmpty();
    }
    server_ = std::make_unique<QProcess>();
    run(*server_, QStringLiteral("postgres"),
        {QStringLiteral("-D"), dir_.filePath(QStringLiteral("data")), QStringLiteral("-k"),
         dir_.path(), QStringLiteral("-c"), QStringLiteral("listen_addresses=")});
    // Its log says when it takes connections: read as it comes, nothing here sleeps.
    QByteArray log;
    while (!log.contains("ready to accept connections")) {
        if (!server_->waitForReadyRead(30000)) {
            error_ = QStringLiteral("postgres did not start: ") + QString::fromLocal8Bit(log);
            server_.reset();
            return false;
        }
        log += server_->readAll();
    }
    // Read on, or a full pipe would hold the server up.
    QObject::connect(server_.get(), &QProcess::readyRead, server_.get(),
                     [p = server_.get()] { p->readAll(); });
    return true;
}

void PgCluster::stop() {
    if (server_ && server_->state() != QProcess::NotRunning) {
        ::kill(static_cast<pid_t>(server_->processId()), SIGINT);
        server_->waitForFinished(60000);
    }
    server_.reset();
}

QString PgCluster::url(const QString& user, const QString& db) const {
    return QStringLiteral("postgresql://%1@/%2?host=%3")
        .arg(user, db, QString::fromLatin1(QUrl::toPercentEncoding(dir_.path())));
}

bool PgCluster::exec(const QString& sql) {
    const QString name = QStringLiteral("pgcluster");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
        db.setHostName(dir_.path());
        db.setDatabaseName(QStringLiteral("postgres"));
        db.setUserName(QStringLiteral("postgres"));
        if (!db.open()) {
            error_ = db.lastError().text();
        } else if (QSqlQuery query(db); !query.exec(sql)) {
            error_ = query.lastError().text();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return error_.isEmpty();
}

} // namespace stellwyn::testsupport
