#pragma once

#include <QSqlDatabase>
#include <QString>

struct sqlite3;

namespace zeral::server {

// The server's one SQLite connection: opened in WAL mode with full syncs, migrated to the
// current schema, with the SQL functions the clients' statements use. It belongs to the
// thread that opened it.
class Database
{
public:
    Database();
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Opens (and creates) the file and brings its schema up to date. An empty text on
    // success, else what went wrong for the operator.
    QString open(const QString &path);
    void close();
    bool isOpen() const { return m_db.isOpen(); }

    QSqlDatabase &connection() { return m_db; }
    sqlite3 *handle() const;
    QString path() const { return m_path; }

    // IMMEDIATE: the write lock is taken at once, not half-way through a request.
    bool begin();
    bool commit();
    void rollback();

private:
    QString m_connectionName;
    QString m_path;
    QSqlDatabase m_db;
};

} // namespace zeral::server
