#pragma once

#include <server/engine/ops/reply.h>

#include <QAtomicInt>
#include <QSqlDatabase>
#include <QString>

struct DbQuery;

namespace zeral::server {

// A read-only connection of its own to the server's database, for the statements clients
// send (data.exec_sql). It is opened, used and closed in one worker thread, beside the
// connection that writes: WAL lets it read the last committed state while a change is being
// written. Every statement runs under ReadOnlyScope, with the server's SQL functions.
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

    QString m_connectionName;
    QString m_path;
    int m_timeLimitMs;
    const QAtomicInt *m_stop;
    QSqlDatabase m_db;
};

} // namespace zeral::server
