#include "sqlitestatement.h"

#include <server/engine/serverlogging.h>

#include <sqlite3.h>

namespace zeral::server {

SqliteStatement::SqliteStatement(sqlite3 *db, const char *sql)
    : m_db(db)
{
    if (!m_db) {
        m_lastError = QStringLiteral("no SQLite handle");
        return;
    }
    if (sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr)
        != SQLITE_OK) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        qCWarning(lcServerDb) << "can't prepare" << sql << m_lastError;
        sqlite3_finalize(m_statement);
        m_statement = nullptr;
    }
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(m_statement);
}

bool SqliteStatement::check(int code)
{
    if (code == SQLITE_OK)
        return true;
    m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
    return false;
}

bool SqliteStatement::start()
{
    if (!m_statement)
        return false;
    m_lastError.clear();
    sqlite3_reset(m_statement);
    return check(sqlite3_clear_bindings(m_statement));
}

bool SqliteStatement::bind(int index, qint64 value)
{
    return check(sqlite3_bind_int64(m_statement, index, value));
}

bool SqliteStatement::bind(int index, const QString &value)
{
    // A null QString means "" in every text column of ours, as QtSql's binds do there.
    const QByteArray utf8 = value.toUtf8();
    return check(sqlite3_bind_text(m_statement, index, utf8.isNull() ? "" : utf8.constData(),
                                   utf8.size(), SQLITE_TRANSIENT));
}

bool SqliteStatement::next()
{
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code != SQLITE_DONE) {
        m_lastError = QString::fromUtf8(sqlite3_errmsg(m_db));
        qCWarning(lcServerDb) << "statement failed:" << sqlite3_sql(m_statement) << m_lastError;
    }
    sqlite3_reset(m_statement);
    return false;
}

void SqliteStatement::finish()
{
    if (m_statement)
        sqlite3_reset(m_statement);
}

qint64 SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

const char *SqliteStatement::text(int column, int *size) const
{
    // The text first, then its length: the call order SQLite documents as safe.
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    *size = sqlite3_column_bytes(m_statement, column);
    return bytes;
}

QString SqliteStatement::string(int column) const
{
    int size = 0;
    const char *bytes = text(column, &size);
    if (!bytes)
        return {};
    return size == 0 ? QString(QLatin1String("")) : QString::fromUtf8(bytes, size);
}

} // namespace zeral::server
