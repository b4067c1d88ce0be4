#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace stellwyn::testsupport {

// A throwaway PostgreSQL cluster in a temporary folder, listening only on a Unix socket there.
// Made with Debian's initdb and run as the postgres process itself, so the test holds its PID,
// stops it when done, and it goes with the test should the test die. As root (CI, this machine)
// the cluster runs as nobody: PostgreSQL refuses to run as root.
class PgCluster {
public:
    // Makes the cluster; ok() says whether it could, error() why not.
    PgCluster();
    ~PgCluster();
    PgCluster(const PgCluster&) = delete;
    PgCluster& operator=(const PgCluster&) = delete;

    bool ok() const { return error_.isEmpty(); }
    const QString& error() const { return error_; }

    bool start();
    // A fast shutdown: connected stations see their connection closed.
    void stop();
    bool running() const;

    QString socketFolder() const { return dir_.path(); }
    // The url of this cluster's database `db` for `user`, as [Store] Url takes it.
    QString url(const QString& user, const QString& db = QStringLiteral("postgres")) const;
    // Runs one statement as the superuser "postgres"; false (and error()) when it fails.
    bool exec(const QString& sql);
    // A role that must give its password; the others get in without one.
    static constexpr const char* passwordRole = "pwuser";

private:
    QString binary(const QString& name) const;

    QTemporaryDir dir_;
    QString bin_;
    QString error_;
    std::unique_ptr<QProcess> server_;
};

} // namespace stellwyn::testsupport
