#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

// A throwaway PostgreSQL cluster in a temporary folder, for the tests of the server on
// PostgreSQL: made with initdb (trust authentication, superuser "zr"), listening on a Unix
// socket in that folder only, stopped and removed on destruction. initdb and the server refuse
// to run as root: when the tests run as root, the cluster's programs run as the system user
// "postgres" (made by Debian's postgresql package) through runuser, and the folder is handed
// to that user. The binaries are looked for in ZR_PG_BIN, else the newest
// /usr/lib/postgresql/N/bin.
class PgCluster
{
public:
    PgCluster();
    ~PgCluster();
    PgCluster(const PgCluster &) = delete;
    PgCluster &operator=(const PgCluster &) = delete;

    // Syncs the cluster's writes to the disk as a real installation does; off by default (the
    // cluster lives for one test run), on for measurements. Before start().
    void keepSyncs() { m_syncs = true; }

    // The folder of initdb, pg_ctl and postgres; empty if there is none.
    static QString binaryDir();

    // Makes the cluster (the first time) and starts it; false with the reason otherwise.
    bool start(QString *why);
    // Stops it at once, as a crash or a pulled cable would (immediate shutdown), or cleanly.
    bool stop(bool immediately = true);
    bool isRunning() const { return m_running; }

    // A new empty database and the URL the server takes for it.
    QString createDatabase(QString *why);
    QString urlOf(const QString &database) const;
    QString socketDir() const;

private:
    bool runTool(const QString &tool, const QStringList &arguments, QString *why);

    QTemporaryDir m_dir;
    bool m_made = false;
    bool m_running = false;
    bool m_asPostgresUser = false;
    bool m_syncs = false;
    int m_databases = 0;
};
