#pragma once

#include <server/engine/storage/databaseaddress.h>

#include <QSqlDatabase>
#include <QString>

#include <functional>

struct sqlite3;

namespace zeral::server {

// The server's one writing connection: to an SQLite file (opened in WAL mode with full syncs,
// with the SQL functions the clients' statements use) or to a PostgreSQL database (whose
// functions and client role the schema makes), migrated to the current schema. It belongs to
// the thread that opened it.
class Database
{
public:
    Database();
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Opens (and creates) the file or connects to the database named by a PostgreSQL URL, and
    // brings its schema up to date. An empty text on success, else what went wrong for the
    // operator.
    QString open(const QString &path);
    void close();
    bool isOpen() const { return m_db.isOpen(); }

    QSqlDatabase &connection() { return m_db; }
    // SQLite's own handle; nullptr on PostgreSQL.
    sqlite3 *handle() const;
    QString path() const { return m_address.text(); }
    const DatabaseAddress &address() const { return m_address; }
    bool isPostgres() const { return m_address.isPostgres(); }

    // Whether the connection still stands. On PostgreSQL a connection that the server lost
    // (restarted, unreachable) is made anew here, once per call; false if that failed too.
    // `beforeReconnect` runs first, so that statements prepared on the old one are dropped.
    bool ensureConnected();
    // Whether the last statement found the connection gone (PostgreSQL only).
    bool connectionLost() const;
    void setBeforeReconnect(std::function<void()> action) { m_beforeReconnect = std::move(action); }

    // Takes the database's write lock at once (SQLite's IMMEDIATE; an advisory lock on
    // PostgreSQL, which every server of the database takes), not half-way through a request.
    bool begin();
    bool commit();
    void rollback();
    // Moves what the write-ahead log holds into the database file and empties the log (SQLite;
    // nothing on PostgreSQL). Best effort: a reader still at an older state keeps its part.
    void checkpoint();

private:
    QString openSqlite();
    QString openPostgres();

    QString m_connectionName;
    DatabaseAddress m_address;
    QSqlDatabase m_db;
    std::function<void()> m_beforeReconnect;
};

} // namespace zeral::server
