#include "PgCluster.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QUuid>
#include <algorithm>
#include <csignal>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace stellwyn::testsupport {

namespace {

// The user the cluster runs as: ourselves, or nobody when we are root.
struct RunAs {
    uid_t uid = ::getuid();
    gid_t gid = ::getgid();
};

RunAs runAs() {
    RunAs who;
    if (who.uid == 0) {
        if (const passwd* nobody = ::getpwnam("nobody")) {
            who.uid = nobody->pw_uid;
            who.gid = nobody->pw_gid;
        }
    }
    return who;
}

void asClusterUser(QProcess& process) {
    const RunAs who = runAs();
    process.setChildProcessModifier([who] {
        if (::getuid() == 0 && (::setgid(who.gid) != 0 || ::setuid(who.uid) != 0)) {
            ::_exit(126);
        }
        // After the change of user, which clears it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    process.setWorkingDirectory(QDir::tempPath());
}

bool chownTree(const QString& path, const RunAs& who) {
    return ::chown(QFile::encodeName(path).constData(), who.uid, who.gid) == 0;
}

} // namespace

PgCluster::PgCluster() {
    // The newest server Debian has put there.
    QStringList versions =
        QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(versions.begin(), versions.end(),
              [](const QString& a, const QString& b) { return a.toInt() < b.toInt(); });
    for (const QString& version : versions) {
        const QString bin = QStringLiteral("/usr/lib/postgresql/%1/bin").arg(version);
        if (QFile::exists(bin + QStringLiteral("/initdb")) &&
            QFile::exists(bin + QStringLiteral("/postgres"))) {
            bin_ = bin;
        }
    }
    if (bin_.isEmpty()) {
        error_ = QStringLiteral("PostgreSQL's initdb and postgres are not under "
                                "/usr/lib/postgresql/*/bin: scripts/setup installs the package "
                                "postgresql");
        return;
    }
    if (!dir_.isValid() || !chownTree(dir_.path(), runAs())) {
        error_ = QStringLiteral("cannot make the cluster's folder %1").arg(dir_.path());
        return;
    }
    QProcess initdb;
    asClusterUser(initdb);
    initdb.setProcessChannelMode(QProcess::MergedChannels);
    initdb.start(binary(QStringLiteral("initdb")),
                 {QStringLiteral("-D"), dir_.filePath(QStringLiteral("data")), QStringLiteral("-U"),
                  QStringLiteral("postgres"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                  QStringLiteral("--locale=C.UTF-8"), QStringLiteral("--auth-local=trust"),
                  QStringLiteral("--no-sync")});
    if (!initdb.waitForFinished(120000) || initdb.exitStatus() != QProcess::NormalExit ||
        initdb.exitCode() != 0) {
        error_ = QStringLiteral("initdb failed: ") + QString::fromLocal8Bit(initdb.readAll());
        return;
    }
    // First match wins: the password role must give one, everyone else is trusted.
    QFile hba(dir_.filePath(QStringLiteral("data/pg_hba.conf")));
    if (!hba.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        error_ = QStringLiteral("cannot write pg_hba.conf");
        return;
    }
    hba.write(QByteArray("local all ") + passwordRole + " scram-sha-256\nlocal all all trust\n");
}

PgCluster::~PgCluster() {
    stop();
}

QString PgCluster::binary(const QString& name) const {
    return bin_ + QLatin1Char('/') + name;
}

bool PgCluster::start() {
    if (!ok()) {
        return false;
    }
    if (running()) {
        return true;
    }
    server_ = std::make_unique<QProcess>();
    asClusterUser(*server_);
    server_->setProcessChannelMode(QProcess::MergedChannels);
    server_->start(binary(QStringLiteral("postgres")),
                   {QStringLiteral("-D"), dir_.filePath(QStringLiteral("data")),
                    QStringLiteral("-k"), dir_.path(), QStringLiteral("-c"),
                    QStringLiteral("listen_addresses="), QStringLiteral("-c"),
                    QStringLiteral("max_connections=40")});
    // Its log says when it takes connections; read as it comes, so nothing here sleeps.
    QByteArray log;
    while (!log.contains("ready to accept connections")) {
        if (!server_->waitForReadyRead(30000)) {
            error_ = QStringLiteral("postgres did not start: ") + QString::fromLocal8Bit(log);
            server_.reset();
            return false;
        }
        log += server_->readAll();
    }
    // Read on, or a full pipe would stop the server's logging and then the server.
    QObject::connect(server_.get(), &QProcess::readyRead, server_.get(),
                     [p = server_.get()] { p->readAll(); });
    return true;
}

void PgCluster::stop() {
    if (!server_) {
        return;
    }
    if (server_->state() != QProcess::NotRunning) {
        ::kill(static_cast<pid_t>(server_->processId()), SIGINT);
        server_->waitForFinished(60000);
    }
    server_.reset();
}

bool PgCluster::running() const {
    return server_ && server_->state() == QProcess::Running;
}

QString PgCluster::url(const QString& user, const QString& db) const {
    return QStringLiteral("postgresql://%1@/%2?host=%3")
        .arg(user, db, QString::fromLatin1(QUrl::toPercentEncoding(dir_.path())));
}

bool PgCluster::exec(const QString& sql) {
    const QString name = QUuid::createUuid().toString();
    bool done = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
        db.setHostName(dir_.path());
        db.setDatabaseName(QStringLiteral("postgres"));
        db.setUserName(QStringLiteral("postgres"));
        if (!db.open()) {
            error_ = db.lastError().text();
        } else {
            QSqlQuery query(db);
            done = query.exec(sql);
            if (!done) {
                error_ = query.lastError().text();
            }
        }
    }
    QSqlDatabase::removeDatabase(name);
    return done;
}

} // namespace stellwyn::testsupport
