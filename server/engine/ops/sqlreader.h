#pragma once

#include <server/engine/ops/reply.h>
#include <server/engine/storage/databaseaddress.h>

#include <QAtomicInt>
#include <QSqlDatabase>
#include <QString>

#include <memory>

struct DbQuery;

namespace zeral::server {

class PostgresClientSql;

// A read-only connection of its own to the server's database, for the statements clients
// send (data.exec_sql). It is opened, used and closed in one worker thread, beside the
// connection that writes: WAL lets it read the last committed state while a change is being
// written. Every statement runs under ReadOnlyScope, with the server's SQL functions. On
// PostgreSQL the connection is PostgresClientSql's, with the same limits and answers.
class SqlReader
{

public:
    static constexpr int MaxRows = 10000;
    // Well below a frame's limit, so that the answer always reaches the client.
    static constexpr qint64 MaxAnswerBytes = 32 * 1024 * 1024;

    // `stop` (set from any thread) stops a running statement when the server stops.
    SqlReader(const QString &databasePath, int timeLimitMs, const QAtomicInt *stop);
    ~SqlReader();
    SqlReader(const SqlReader &) = delete;
    SqlReader &operator=(const SqlReader &) = delete;

    // Runs the statements one after another; the answer is the last one's rows.
    Reply run(const DbQuery &query);

private:
    bool open();
    Reply runOne(const QString &text, int rowLimit, QByteArray *packed);
    Reply runOnPostgres(const QString &text, int rowLimit, QByteArray *packed);
    // The answers both databases give alike.
    static Reply refusal(const QString &what);
    static Reply badStatement(const QString &error);
    Reply timedOut() const;
    static Reply stopping();
    static Reply tooLarge();

    QString m_connectionName;
    QString m_path;
    DatabaseAddress m_address;
    std::unique_ptr<PostgresClientSql> m_postgres;
    int m_timeLimitMs;
    const QAtomicInt *m_stop;
    QSqlDatabase m_db;
};

} // namespace zeral::server
