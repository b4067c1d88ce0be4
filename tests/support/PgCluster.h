#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace stellwyn::testsupport {

// A throwaway PostgreSQL cluster in a temporary folder, listening only on a Unix socket there,
// run as the postgres process itself so that the test holds its PID and the server goes with
// the test should the test die. As root the cluster runs as nobody: PostgreSQL refuses root.
class PgCluster {
public:
    PgCluster();
    ~PgCluster() { stop(); }
    PgCluster(const PgCluster&) = delete;
    PgCluster& operator=(const PgCluster&) = delete;

    // Why the cluster could not be made, started, or run a statement; empty when all went well.
    const QString& error() const { return error_; }
    bool start();
    // A fast shutdown: connected stations see their connection closed.
    void stop();

    // The url of database `db` for `user`, as [Store] Url takes it.
    QString url(const QString& user, const QString& db = QStringLiteral("postgres")) const;
    // Runs one statement as the superuser "postgres".
    bool exec(const QString& sql);
    // The one role that must give its password, "right"; every other role is trusted.
    static constexpr const char* passwordRole = "pwuser";

private:
    bool run(QProcess& process, const QString& binary, const QStringList& arguments);

    QTemporaryDir dir_;
    QString bin_;
    QString error_;
    std::unique_ptr<QProcess> server_;
};

} // namespace stellwyn::testsupport
