#pragma once

// Which database the server tests run on: an SQLite file by default, a fresh database of a
// throwaway PostgreSQL cluster when ZR_TEST_DB=postgresql (ctest registers the server tests
// a second time so). The cluster is made once per test program and goes with it.

#include <server/engine/storage/databaseaddress.h>
#include <tests/support/pgcluster.h>

#include <QDir>
#include <QSqlDatabase>
#include <QString>

namespace harness {

inline bool onPostgres()
{
    return qEnvironmentVariable("ZR_TEST_DB") == QLatin1String("postgresql");
}

inline PgCluster &testCluster()
{
    static PgCluster cluster;
    return cluster;
}

// Empty when the tests can run on the chosen database, else why not.
inline QString backendUnavailable()
{
    if (!onPostgres())
        return {};
    QString why;
    return testCluster().start(&why) ? QString() : QStringLiteral("PostgreSQL: ") + why;
}

// Where a server of a test keeps its data: `fileName` in `dir` on SQLite, a new database of
// the cluster on PostgreSQL (empty if none could be made; the engine then refuses to start).
inline QString newTestDatabase(const QString &dir, const QString &fileName)
{
    if (!onPostgres())
        return QDir(dir).filePath(fileName);
    QString why;
    const QString url = testCluster().createDatabase(&why);
    if (url.isEmpty())
        qWarning("no PostgreSQL database for the test: %s", qPrintable(why));
    return url;
}

// A connection of the test's own to the server's data, not yet open, for looking behind the
// engine or putting in what no command puts.
inline QSqlDatabase sideDatabase(const QString &databasePath, const QString &connectionName)
{
    return zeral::server::DatabaseAddress(databasePath)
        .addConnection(connectionName, QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
}

// A binary literal of these hex digits, in the database's own spelling.
inline QString blobLiteral(const QString &hex)
{
    return onPostgres() ? QStringLiteral("'\\x%1'::bytea").arg(hex)
                        : QStringLiteral("x'%1'").arg(hex);
}

// A client statement: the templates that hold `role`, comma separated in order.
inline QString templatesHolding(const QString &role)
{
    return onPostgres() ? QStringLiteral("SELECT string_agg(template_id, ',' ORDER BY template_id)"
                                         " FROM role_template_roles WHERE role = '%1'")
                              .arg(role)
                        : QStringLiteral("SELECT group_concat(template_id) FROM (SELECT template_id"
                                         " FROM role_template_roles WHERE role = '%1' ORDER BY 1)")
                              .arg(role);
}

} // namespace harness

// Skips the test program (from initTestCase) when its database can't be had.
#define ZR_SKIP_WITHOUT_TEST_DATABASE()                                                            \
    do {                                                                                           \
        const QString zrWhy = harness::backendUnavailable();                                       \
        if (!zrWhy.isEmpty())                                                                      \
            QSKIP(qPrintable(zrWhy));                                                              \
    } while (false)
