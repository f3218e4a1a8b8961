#pragma once

#include <QString>

class QSqlDatabase;

namespace zeral::server {

// The few statement parts that SQLite and PostgreSQL spell differently, side by side. Every
// other statement of the server is one text that both run; the schemas are in Schema.
class SqlDialect
{
public:
    // The dialect of the connection's driver.
    static SqlDialect of(const QSqlDatabase &db);

    bool isPostgres() const { return m_postgres; }

    // Starts a request's transaction holding the one write lock of the database: SQLite's
    // IMMEDIATE, and on PostgreSQL a transaction-scoped advisory lock that every server on
    // the database takes, so that requests are applied one at a time as on SQLite.
    QStringList beginWrite() const;
    // `column` equal to a bound text, ASCII case folded (SQLite's NOCASE).
    QString equalsFoldingCase(const QString &column) const;
    // `column` contains a bound text.
    QString contains(const QString &column) const;
    // An empty value of a binary column.
    QString emptyBlob() const;
    // The column type of binary values and of a key that the database numbers itself.
    QString blobType() const;
    QString autoKey() const;

private:
    explicit SqlDialect(bool postgres)
        : m_postgres(postgres)
    {}
    bool m_postgres;
};

} // namespace zeral::server
