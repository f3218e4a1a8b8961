#pragma once

#include <QString>

struct sqlite3;
struct sqlite3_stmt;

namespace zeral::server {

// One statement prepared once on the connection's own SQLite handle, for the reads where
// QtSql's copy of every value into a QVariant costs more than the reading itself. It runs
// inside whatever transaction the connection has open. Texts come as UTF-8 bytes, to be
// turned into QStrings only where needed.
class SqliteStatement
{
public:
    SqliteStatement(sqlite3 *db, const char *sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement &) = delete;
    SqliteStatement &operator=(const SqliteStatement &) = delete;

    // Forgets the last run and its binds; false if the statement couldn't be prepared.
    bool start();
    // Indices from 1, as in the text ("?1").
    bool bind(int index, qint64 value);
    bool bind(int index, const QString &value);
    // True on a row; false at the end, or on an error when lastError() isn't empty.
    bool next();
    // Drops the rows not read, so that the statement holds nothing between runs.
    void finish();

    qint64 integer(int column) const;
    // A NULL gives nullptr; `size` gets the length in bytes without the terminating 0.
    const char *text(int column, int *size) const;
    // A NULL gives a null QString, any other value (an empty one too) a non-null one.
    QString string(int column) const;

    QString lastError() const { return m_lastError; }

private:
    bool check(int code);

    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_statement = nullptr;
    QString m_lastError;
};

} // namespace zeral::server
