#pragma once

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVector>

namespace zeral::server {

// The reads of many rows that SqliteStatement makes on SQLite's own handle, made through
// QtSql on a connection of another driver (PostgreSQL), with the same interface, so that one
// reading loop serves both. Placeholders are written "?1", "?2" as for SQLite and become
// PostgreSQL's "$1", "$2".
class QtSqlStatement
{
public:
    QtSqlStatement(const QSqlDatabase &db, const char *sql);
    QtSqlStatement(const QtSqlStatement &) = delete;
    QtSqlStatement &operator=(const QtSqlStatement &) = delete;

    bool start();
    bool bind(int index, qint64 value);
    bool bind(int index, const QString &value);
    bool next();
    void finish();

    qint64 integer(int column) const;
    // UTF-8 bytes that stay valid until the next row; a NULL gives nullptr.
    const char *text(int column, int *size) const;
    QString string(int column) const;

    QString lastError() const { return m_lastError; }

private:
    bool bindValue(int index, const QVariant &value);

    QSqlQuery m_query;
    QVector<QVariant> m_binds;
    mutable QVector<QByteArray> m_texts;
    bool m_prepared = false;
    QString m_lastError;
};

} // namespace zeral::server
