#pragma once

#include <host/core/dbresult.h>

#include <QAtomicInt>
#include <QByteArray>
#include <QString>

struct pg_conn;

namespace zeral::server {

// One connection of a client SQL worker to a PostgreSQL database, and what SQLite's
// authorizer and progress handler do there (ReadOnlyScope): each statement runs alone
// (libpq's extended protocol takes one statement, never a list), in a read-only transaction
// under the role `zr_client_sql` that may read only what clients may read, with a statement
// timeout, and the transaction is always rolled back, so that even a SET it ran is undone.
// A statement that answers no rows (SET, COMMIT, DO ...) is refused. Rows are read one at a
// time and the statement is cancelled once the row or size limit is reached or `stop` turns
// non-zero.
class PostgresClientSql
{
public:
    struct Outcome
    {
        enum Kind { Rows, Refused, Failed, TimedOut, Stopped, TooLarge, Unreachable };
        Kind kind = Failed;
        QString detail; // what was refused, or the database's error
        DbResult result;
    };

    explicit PostgresClientSql(QByteArray connInfo);
    ~PostgresClientSql();
    PostgresClientSql(const PostgresClientSql &) = delete;
    PostgresClientSql &operator=(const PostgresClientSql &) = delete;

    Outcome run(const QString &statement, int rowLimit, qint64 maxBytes, int timeLimitMs,
                const QAtomicInt *stop);

private:
    bool connected();
    bool exec(const char *sql);
    void cancel();

    QByteArray m_connInfo;
    pg_conn *m_connection = nullptr;
};

} // namespace zeral::server
